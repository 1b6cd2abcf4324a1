#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// The request that "Create GDPS" sends: which pairs, in which order, and how each field is read.
class CreateRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theDefaultFormSendsSevenPairsInOrder();
    void theFullFormSendsNinePairsInOrder();
    void bothBoxesUncheckedAndNoCoresSendExactlySixPairs();
    void aNameIsTrimmed();
    void aDescriptionIsTrimmedAndKeepsItsLines();
    void anEmptyEmojiBecomesTheFire_data();
    void anEmptyEmojiBecomesTheFire();
    void anEmptyAccentBecomesTheDefault_data();
    void anEmptyAccentBecomesTheDefault();
    void tagsAreSentAsTheyWereTyped();
    void emptyDescriptionAndTagsAreStillSent();
    void thePresetIsSentExactlyAsTheComboShowsIt();
    void theCoreIsSentAsItsKeyUntrimmed();
    void eachBoxAddsItsOwnPair_data();
    void eachBoxAddsItsOwnPair();
    void theFieldsAreReadAtThePress();
    void theRequestGoesToTheBaseUrlOfTheMoment();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    static constexpr QStringView publicBox = u"Show this GDPS in the public recent list";
    static constexpr QStringView maintenanceBox = u"Start this GDPS in maintenance mode";

    /// The pairs of the one creation that the service has got, still in their encoding.
    static QList<QByteArray> sentPairs(const Run& run)
    {
        const auto requests = run.server.requests(callPath(Call::CreateInstance));
        return requests.size() == 1 ? requests.constFirst().body.split('&') : QList<QByteArray>();
    }
    static QByteArray sentPair(const Run& run, const QByteArray& name)
    {
        for (const QByteArray& pair : sentPairs(run)) {
            if (pair.startsWith(name + '=')) {
                return pair;
            }
        }
        return {};
    }
    /// Presses the button and waits until the request has been made and answered.
    static bool create(Run& run)
    {
        run.press(u"Create GDPS");
        return QTest::qWaitFor([&run] { return run.server.count(callPath(Call::Instances)) == 2; });
    }
};

void CreateRequestTest::theDefaultFormSendsSevenPairsInOrder()
{
    Run run;
    run.server.reply(callPath(Call::Session), Reply::json(200, "{}"));
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    QVERIFY(create(run));
    const support::RecordedRequest request = run.server.requests(callPath(Call::CreateInstance)).constFirst();
    QCOMPARE(request.method, "POST");
    QCOMPARE(request.target, "/api/pc/instances/create");
    QCOMPARE(request.header("Authorization"), "Bearer token-1");
    QCOMPARE(request.header("Content-Type"), "application/x-www-form-urlencoded");
    QCOMPARE(request.body, "display_name=Neon&description=&emoji_badge=%F0%9F%94%A5&accent_color=%23ff8f1f"
                           "&tags=&preset_name=balanced&public_listing=true");
}

void CreateRequestTest::theFullFormSendsNinePairsInOrder()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().description()->setPlainText(u"Bright"_s);
    run.view().line(u"Emoji")->setText(u"⭐"_s);
    run.view().line(u"Accent")->setText(u"red"_s);
    run.view().line(u"Tags")->setText(u"stars"_s);
    run.view().combo(u"Preset")->setCurrentText(u"casual"_s);
    run.view().checkBox(maintenanceBox)->setChecked(true);
    QVERIFY(create(run));
    QCOMPARE(sentPairs(run), (QList<QByteArray>{"display_name=Neon", "description=Bright", "emoji_badge=%E2%AD%90",
                                                "accent_color=red", "tags=stars", "preset_name=casual",
                                                "core_key=core-a", "public_listing=true", "maintenance_mode=true"}));
}

void CreateRequestTest::bothBoxesUncheckedAndNoCoresSendExactlySixPairs()
{
    Run run;
    run.server.reply(callPath(Call::Session), Reply::json(200, "{}"));
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().checkBox(publicBox)->setChecked(false);
    QVERIFY(create(run));
    QCOMPARE(sentPairs(run), (QList<QByteArray>{"display_name=Neon", "description=", "emoji_badge=%F0%9F%94%A5",
                                                "accent_color=%23ff8f1f", "tags=", "preset_name=balanced"}));
}

void CreateRequestTest::aNameIsTrimmed()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u" \t Neon  Burst  "_s);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "display_name"), "display_name=Neon%20%20Burst");
}

void CreateRequestTest::aDescriptionIsTrimmedAndKeepsItsLines()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().description()->setPlainText(u"\n  first \n\nthird  \n "_s);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "description"), "description=first%20%0A%0Athird");
}

void CreateRequestTest::anEmptyEmojiBecomesTheFire_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("emptied") << QString() << QByteArray("emoji_badge=%F0%9F%94%A5");
    QTest::newRow("blanks") << u"   "_s << QByteArray("emoji_badge=%F0%9F%94%A5");
    QTest::newRow("a word") << u" x "_s << QByteArray("emoji_badge=x");
}

void CreateRequestTest::anEmptyEmojiBecomesTheFire()
{
    QFETCH(QString, typed);
    QFETCH(QByteArray, sent);
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().line(u"Emoji")->setText(typed);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "emoji_badge"), sent);
    QCOMPARE(run.view().line(u"Emoji")->text(), typed);
}

void CreateRequestTest::anEmptyAccentBecomesTheDefault_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("emptied") << QString() << QByteArray("accent_color=%23ff8f1f");
    QTest::newRow("blanks") << u"  "_s << QByteArray("accent_color=%23ff8f1f");
    QTest::newRow("no colour at all") << u" Orange! "_s << QByteArray("accent_color=Orange!");
}

void CreateRequestTest::anEmptyAccentBecomesTheDefault()
{
    QFETCH(QString, typed);
    QFETCH(QByteArray, sent);
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().line(u"Accent")->setText(typed);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "accent_color"), sent);
}

void CreateRequestTest::tagsAreSentAsTheyWereTyped()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().line(u"Tags")->setText(u"  hardcore, stars ,cube,,cube "_s);
    QVERIFY(create(run));
    QCOMPARE(QByteArray::fromPercentEncoding(sentPair(run, "tags")), "tags=hardcore, stars ,cube,,cube");
}

void CreateRequestTest::emptyDescriptionAndTagsAreStillSent()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().description()->setPlainText(u" \n "_s);
    run.view().line(u"Tags")->setText(u"  "_s);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "description"), "description=");
    QCOMPARE(sentPair(run, "tags"), "tags=");
}

void CreateRequestTest::thePresetIsSentExactlyAsTheComboShowsIt()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().combo(u"Preset")->addItem(u"  of my own "_s, u"data"_s);
    run.view().combo(u"Preset")->setCurrentIndex(3);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "preset_name"), "preset_name=%20%20of%20my%20own%20");
}

void CreateRequestTest::theCoreIsSentAsItsKeyUntrimmed()
{
    Run run;
    run.server.reply(callPath(Call::Session),
                     Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":" b ","label":"B"}]})"));
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().combo(u"Core")->setCurrentIndex(1);
    QVERIFY(create(run));
    QCOMPARE(sentPair(run, "core_key"), "core_key=%20b%20");
}

void CreateRequestTest::eachBoxAddsItsOwnPair_data()
{
    QTest::addColumn<bool>("publicListing");
    QTest::addColumn<bool>("maintenance");
    QTest::addColumn<QList<QByteArray>>("pairs");
    QTest::newRow("none") << false << false << QList<QByteArray>{};
    QTest::newRow("public listing") << true << false << QList<QByteArray>{"public_listing=true"};
    QTest::newRow("maintenance") << false << true << QList<QByteArray>{"maintenance_mode=true"};
    QTest::newRow("both") << true << true << QList<QByteArray>{"public_listing=true", "maintenance_mode=true"};
}

void CreateRequestTest::eachBoxAddsItsOwnPair()
{
    QFETCH(bool, publicListing);
    QFETCH(bool, maintenance);
    QFETCH(QList<QByteArray>, pairs);
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().checkBox(publicBox)->setChecked(publicListing);
    run.view().checkBox(maintenanceBox)->setChecked(maintenance);
    QVERIFY(create(run));
    // Six fixed pairs and the core come first.
    QCOMPARE(sentPairs(run).mid(7), pairs);
}

void CreateRequestTest::theFieldsAreReadAtThePress()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Before"_s);
    run.server.hold(callPath(Call::CreateInstance));
    run.press(u"Create GDPS");
    run.view().line(u"GDPS Name")->setText(u"After"_s);
    run.view().line(u"Tags")->setText(u"late"_s);
    QTRY_COMPARE(run.server.heldCount(callPath(Call::CreateInstance)), 1);
    QCOMPARE(sentPair(run, "display_name"), "display_name=Before");
    QCOMPARE(sentPair(run, "tags"), "tags=");
}

void CreateRequestTest::theRequestGoesToTheBaseUrlOfTheMoment()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().line(u"Tarnwick URL")->setText(u" "_s + run.server.origin() + u"/a b// "_s);
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.count("/a%20b/api/pc/instances/create"), 1);
}

QTEST_MAIN(CreateRequestTest)
#include "create_request_test.moc"
