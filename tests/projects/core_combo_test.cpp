#include "support/client_test.h"

using support::Call;
using support::callPath;
using support::Reply;

/// The items of the creation form's core list. SessionCheckTest tests which cores there are.
class CoreComboTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAnySessionOneItemSaysThatThereAreNone()
    {
        Run run;
        run.start();
        const QComboBox* combo = run.view().combo(u"Core");
        QCOMPARE(combo->count(), 1);
        QCOMPARE(combo->currentIndex(), 0);
        QCOMPARE(combo->currentText(), u"No cores available"_s);
        QVERIFY(!combo->currentData().isValid());
        QVERIFY(combo->itemIcon(0).isNull());
    }

    void everyItemShowsTheLabelAndCarriesTheKey()
    {
        Run run;
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, R"({"available_cores":[{"key":"a","label":"<i>A</i>"},{"key":" b "}]})"));
        QVERIFY(run.startSignedIn());
        const QComboBox* combo = run.view().combo(u"Core");
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->itemText(0), u"<i>A</i>"_s);
        QCOMPARE(combo->itemData(0), QVariant(u"a"_s));
        QCOMPARE(combo->itemData(1), QVariant(u" b "_s));
        QVERIFY(combo->itemIcon(0).isNull());
    }

    void theFirstCoreIsCurrentAfterEveryFill()
    {
        Run run;
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b"},{"key":"c"}]})"));
        QVERIFY(run.startSignedIn());
        run.view().combo(u"Core")->setCurrentIndex(2);
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"token-2"})")));
        QTRY_COMPARE(run.server.count(callPath(Call::Instances)), 2);
        QCOMPARE(run.view().combo(u"Core")->count(), 3);
        QCOMPARE(run.view().combo(u"Core")->currentIndex(), 0);
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(CoreComboTest)
#include "core_combo_test.moc"
