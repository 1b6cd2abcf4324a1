#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// The choices of the creation form's core list. How they are read from a reply is the session check's
/// matter.
class CoreComboTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void beforeAnySessionItSaysThatThereAreNone();
    void everyItemShowsTheLabelAndCarriesTheKey();
    void theFirstCoreIsCurrentAfterEveryFill();
    void anAccountWithoutCoresHasOneItemWithoutData();
    void unlinkingLeavesOneItemWithoutData();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static Reply coresOf(const QByteArray& elements)
    {
        return Reply::json(200, R"({"available_cores":[)" + elements + "]}");
    }
    static void verifyThatThereAreNone(const QComboBox* combo)
    {
        QCOMPARE(combo->count(), 1);
        QCOMPARE(combo->currentIndex(), 0);
        QCOMPARE(combo->currentText(), u"No cores available"_s);
        QVERIFY(!combo->currentData().isValid());
        QVERIFY(combo->itemIcon(0).isNull());
    }
    /// Has an approved link code bring about another session check.
    static bool checkAgain(Run& run)
    {
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
        if (!run.showLinkCode(u"TWPC-1"_s)) {
            return false;
        }
        run.tick();
        return QTest::qWaitFor([&run] { return run.server.count(callPath(Call::Instances)) == 2; });
    }
};

void CoreComboTest::beforeAnySessionItSaysThatThereAreNone()
{
    Run run;
    run.start();
    verifyThatThereAreNone(run.view().combo(u"Core"));
}

void CoreComboTest::everyItemShowsTheLabelAndCarriesTheKey()
{
    Run run;
    run.server.reply(callPath(Call::Session), coresOf(R"({"key":"a","label":"<i>A</i>"},{"key":" b ","label":"B"})"));
    QVERIFY(run.startSignedIn());
    const QComboBox* combo = run.view().combo(u"Core");
    QCOMPARE(combo->count(), 2);
    QCOMPARE(combo->itemText(0), u"<i>A</i>"_s);
    QCOMPARE(combo->itemText(1), u"B"_s);
    QCOMPARE(combo->itemData(0), QVariant(u"a"_s));
    QCOMPARE(combo->itemData(1), QVariant(u" b "_s));
    QVERIFY(combo->itemIcon(0).isNull());
    QCOMPARE(combo->currentIndex(), 0);
}

void CoreComboTest::theFirstCoreIsCurrentAfterEveryFill()
{
    Run run;
    run.server.reply(callPath(Call::Session), coresOf(R"({"key":"a"},{"key":"b"},{"key":"c"})"));
    QVERIFY(run.startSignedIn());
    run.view().combo(u"Core")->setCurrentIndex(2);
    QVERIFY(checkAgain(run));
    QCOMPARE(run.view().combo(u"Core")->count(), 3);
    QCOMPARE(run.view().combo(u"Core")->currentIndex(), 0);
    QCOMPARE(run.view().combo(u"Core")->currentText(), u"a"_s);
}

void CoreComboTest::anAccountWithoutCoresHasOneItemWithoutData()
{
    Run run;
    run.server.replies(callPath(Call::Session), {coresOf(R"({"key":"a"},{"key":"b"})"), coresOf({})});
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().combo(u"Core")->count(), 2);
    QVERIFY(checkAgain(run));
    verifyThatThereAreNone(run.view().combo(u"Core"));
}

void CoreComboTest::unlinkingLeavesOneItemWithoutData()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().combo(u"Core")->currentData(), QVariant(u"core-a"_s));
    run.press(u"Unlink");
    verifyThatThereAreNone(run.view().combo(u"Core"));
}

QTEST_MAIN(CoreComboTest)
#include "core_combo_test.moc"
