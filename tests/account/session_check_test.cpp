#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/enabled_watch.h"

#include <QFile>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// What a successful session check puts into the window.
class SessionCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void aStoredTokenIsCheckedAtStart();
    void withoutATokenNothingIsChecked();
    void theAccountCardShowsTheUser_data();
    void theAccountCardShowsTheUser();
    void theCoreListOffersTheAvailableCores_data();
    void theCoreListOffersTheAvailableCores();
    void aServiceMessageIsNotShown();
    void cardThenCoresThenStatusThenProjectFetch();
    void theProjectsAreFetchedWithTheToken();
    void aSuccessfulCheckSavesNothing();
    void aLaterCheckReplacesAccountAndCores();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    using Choices = QList<std::pair<QString, QString>>;

    /// The items of the core list as (data, text).
    static Choices choicesOf(const QComboBox* combo)
    {
        Choices choices;
        for (int index = 0; index < combo->count(); ++index) {
            choices.append({combo->itemData(index).toString(), combo->itemText(index)});
        }
        return choices;
    }
};

void SessionCheckTest::aStoredTokenIsCheckedAtStart()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.startLinked();
    QCOMPARE(run.view().status(), u"Checking linked Tarnwick session..."_s);
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(run.server.count(), 1);
    const support::RecordedRequest request = run.server.requests().constFirst();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.target, "/api/pc/me");
    QCOMPARE(request.header("Authorization"), "Bearer token-1");
    QCOMPARE(request.body, "");
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
}

void SessionCheckTest::withoutATokenNothingIsChecked()
{
    Run run;
    run.start();
    QCOMPARE(run.view().status(), u"Ready to link your Tarnwick account."_s);
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 1);
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 1);
}

void SessionCheckTest::theAccountCardShowsTheUser_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("card");
    const QStringList defaults{u"Signed in as Tarnwick user"_s, u"Plan: Free"_s, u"Limit: -"_s};
    QTest::newRow("all given")
        << QByteArray(R"({"user":{"display_name":"Ann","plan_name":"Pro","gdps_limit_label":"3 of 5"}})")
        << QStringList{u"Signed in as Ann"_s, u"Plan: Pro"_s, u"Limit: 3 of 5"_s};
    QTest::newRow("empty user") << QByteArray(R"({"user":{}})") << defaults;
    QTest::newRow("no user") << QByteArray("{}") << defaults;
    QTest::newRow("user is a text") << QByteArray(R"({"user":"Ann"})") << defaults;
    QTest::newRow("user is an array") << QByteArray(R"({"user":[{"display_name":"Ann"}]})") << defaults;
    QTest::newRow("no JSON object") << QByteArray("Ann") << defaults;
    QTest::newRow("plan outside of user")
        << QByteArray(R"({"plan_name":"Pro","display_name":"Ann","gdps_limit_label":"9","user":{}})") << defaults;
    QTest::newRow("other types") << QByteArray(
                                        R"({"user":{"display_name":1,"plan_name":null,"gdps_limit_label":true}})")
                                 << defaults;
    QTest::newRow("empty texts") << QByteArray(R"({"user":{"display_name":"","plan_name":"","gdps_limit_label":""}})")
                                 << QStringList{u"Signed in as "_s, u"Plan: "_s, u"Limit: "_s};
    QTest::newRow("blanks stay") << QByteArray(R"({"user":{"display_name":" Ann "}})")
                                 << QStringList{u"Signed in as  Ann "_s, u"Plan: Free"_s, u"Limit: -"_s};
    QTest::newRow("place markers stay") << QByteArray(R"({"user":{"display_name":"%1","plan_name":"%2"}})")
                                        << QStringList{u"Signed in as %1"_s, u"Plan: %2"_s, u"Limit: -"_s};
}

void SessionCheckTest::theAccountCardShowsTheUser()
{
    QFETCH(QByteArray, body);
    QFETCH(QStringList, card);
    Run run;
    run.server.reply(callPath(Call::Session), Reply::json(200, body));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().account(), card);
}

void SessionCheckTest::theCoreListOffersTheAvailableCores_data()
{
    QTest::addColumn<QByteArray>("cores");
    QTest::addColumn<Choices>("choices");
    const Choices none{{QString(), u"No cores available"_s}};
    QTest::newRow("key alone, label alone, both")
        << QByteArray(R"([{"key":"a"},{"label":"B"},{"key":"c","label":"C"}])")
        << Choices{{u"a"_s, u"a"_s}, {u"c"_s, u"C"_s}};
    QTest::newRow("order of the service")
        << QByteArray(R"([{"key":"z","label":"A"},{"key":"a","label":"Z"},{"key":"m","label":"B"}])")
        << Choices{{u"z"_s, u"A"_s}, {u"a"_s, u"Z"_s}, {u"m"_s, u"B"_s}};
    QTest::newRow("duplicates stay") << QByteArray(R"([{"key":"a","label":"A"},{"key":"a","label":"A"}])")
                                     << Choices{{u"a"_s, u"A"_s}, {u"a"_s, u"A"_s}};
    QTest::newRow("empty key") << QByteArray(R"([{"key":"","label":"A"},{"key":"b"}])") << Choices{{u"b"_s, u"b"_s}};
    QTest::newRow("blank key stays") << QByteArray(R"([{"key":" "}])") << Choices{{u" "_s, u" "_s}};
    QTest::newRow("key of another type") << QByteArray(R"([{"key":1,"label":"One"},{"key":"b"}])")
                                         << Choices{{u"b"_s, u"b"_s}};
    QTest::newRow("label of another type") << QByteArray(R"([{"key":"a","label":7},{"key":"b","label":null}])")
                                           << Choices{{u"a"_s, u"a"_s}, {u"b"_s, u"b"_s}};
    QTest::newRow("empty label stays") << QByteArray(R"([{"key":"a","label":""}])") << Choices{{u"a"_s, QString()}};
    QTest::newRow("elements of other types")
        << QByteArray(R"([7,"a",null,["a"],{"key":"b"}])") << Choices{{u"b"_s, u"b"_s}};
    QTest::newRow("empty array") << QByteArray("[]") << none;
    QTest::newRow("object instead of array") << QByteArray(R"({"key":"a"})") << none;
    QTest::newRow("text instead of array") << QByteArray(R"("a")") << none;
    QTest::newRow("null") << QByteArray("null") << none;
}

void SessionCheckTest::theCoreListOffersTheAvailableCores()
{
    QFETCH(QByteArray, cores);
    QFETCH(Choices, choices);
    Run run;
    // Cores inside the user do not count.
    run.server.reply(
        callPath(Call::Session),
        Reply::json(200, R"({"user":{"available_cores":[{"key":"wrong"}]},"available_cores":)" + cores + '}'));
    QVERIFY(run.startSignedIn());
    QCOMPARE(choicesOf(run.view().combo(u"Core")), choices);
    QCOMPARE(run.view().combo(u"Core")->currentIndex(), 0);
}

void SessionCheckTest::aServiceMessageIsNotShown()
{
    Run run;
    run.server.reply(callPath(Call::Session), Reply::json(200, R"({"message":"Hello","error":"None"})"));
    run.server.hold(callPath(Call::Instances));
    run.startLinked();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    QCOMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
}

void SessionCheckTest::cardThenCoresThenStatusThenProjectFetch()
{
    Run run;
    run.startLinked();
    const QStringList ann{u"Signed in as Ann"_s, u"Plan: Pro"_s, u"Limit: 3 of 5"_s};
    QStringList steps;
    connect(run.view().combo(u"Core"), &QComboBox::currentTextChanged, this, [&](const QString& text) {
        if (text.isEmpty()) { // the former items are being removed
            return;
        }
        steps.append(u"cores"_s);
        QCOMPARE(text, u"Core A"_s);
        QCOMPARE(run.view().account(), ann);
        QCOMPARE(run.view().status(), u"Checking linked Tarnwick session..."_s);
    });
    const support::EnabledWatch watch(run.view().button(u"Refresh"), [&](bool enabled) {
        if (enabled) {
            return;
        }
        steps.append(u"fetch"_s);
        QCOMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
    });
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(steps, (QStringList{u"cores"_s, u"fetch"_s}));
}

void SessionCheckTest::theProjectsAreFetchedWithTheToken()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.server.count(), 2);
    QCOMPARE(run.server.count(callPath(Call::Session)), 1);
    const support::RecordedRequest fetch = run.server.requests().constLast();
    QCOMPARE(fetch.method, "GET");
    QCOMPARE(fetch.target, "/api/pc/instances");
    QCOMPARE(fetch.header("Authorization"), "Bearer token-1");
}

void SessionCheckTest::aSuccessfulCheckSavesNothing()
{
    Run run;
    run.startLinked();
    QVERIFY(QFile::remove(run.home().stateFile()));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QVERIFY(!QFile::exists(run.home().stateFile()));
}

void SessionCheckTest::aLaterCheckReplacesAccountAndCores()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Session),
                     Reply::json(200, R"({"user":{"display_name":"Bob"},"available_cores":[{"key":"core-b"}]})"));
    run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::Instances)), 2);
    QCOMPARE(run.view().account(), (QStringList{u"Signed in as Bob"_s, u"Plan: Free"_s, u"Limit: -"_s}));
    QCOMPARE(choicesOf(run.view().combo(u"Core")), (Choices{{u"core-b"_s, u"core-b"_s}}));
}

QTEST_MAIN(SessionCheckTest)
#include "session_check_test.moc"
