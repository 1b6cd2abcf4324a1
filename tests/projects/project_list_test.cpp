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

/// Fetching the project list: when it is asked for, how a reply is read, what a failure leaves.
class ProjectListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void everyElementBecomesARow_data();
    void everyElementBecomesARow();
    void aReplyWithoutAListEmptiesTheTable_data();
    void aReplyWithoutAListEmptiesTheTable();
    void theCountIsPlainDecimal();
    void aServiceMessageIsNotShown();
    void theRowsAreThereBeforeTheStatusSaysSo();
    void refreshAsksForTheListOnly();
    void aRefreshWhileOneIsInFlightSetsTheTextAndSendsNothing();
    void aRefreshWhileUnlinkedSetsTheTextAndSendsNothing();
    void aCreationIsFollowedByAFetch();
    void aSessionCheckDuringAFetchSendsNoSecondOneAndSaysNothing();
    void aFailedFetchKeepsTheRowsAndTheAccount_data();
    void aFailedFetchKeepsTheRowsAndTheAccount();
    void aFailedFetchAtStartLeavesTheDesktopLinked();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    using Rows = QList<QStringList>;

    static Rows rowsOf(const support::WindowView& view)
    {
        Rows rows;
        for (int row = 0; row < view.table()->rowCount(); ++row) {
            rows.append(view.row(row));
        }
        return rows;
    }
};

void ProjectListTest::everyElementBecomesARow_data()
{
    QTest::addColumn<QByteArray>("instances");
    QTest::addColumn<Rows>("rows");
    const QStringList blank{QString(), QString(), QString(), QString()};
    QTest::newRow("complete") << QByteArray(R"([{"display_name":"Neon","slug":"neon","core_label":"Core A",)"
                                            R"("status":"online","manage_url":"m","public_url":"p","id":7}])")
                              << Rows{{u"Neon"_s, u"neon"_s, u"Core A"_s, u"online"_s}};
    QTest::newRow("a number among objects") << QByteArray(R"([{"display_name":"A","status":"online"},7])")
                                            << Rows{{u"A"_s, QString(), QString(), u"online"_s}, blank};
    QTest::newRow("slug as a number") << QByteArray(R"([{"display_name":"A","slug":42}])")
                                      << Rows{{u"A"_s, QString(), QString(), QString()}};
    QTest::newRow("other types") << QByteArray(R"([{"display_name":null,"slug":[],"core_label":{},"status":true}])")
                                 << Rows{blank};
    QTest::newRow("empty objects") << QByteArray("[{},{},{}]") << Rows{blank, blank, blank};
    QTest::newRow("elements of other types")
        << QByteArray(R"([null,"text",["display_name"],false])") << Rows{blank, blank, blank, blank};
    QTest::newRow("order of the service")
        << QByteArray(R"([{"display_name":"b"},{"display_name":"C"},{"display_name":"a"}])")
        << Rows{{u"b"_s, QString(), QString(), QString()},
                {u"C"_s, QString(), QString(), QString()},
                {u"a"_s, QString(), QString(), QString()}};
    QTest::newRow("duplicates") << QByteArray(R"([{"slug":"s"},{"slug":"s"}])")
                                << Rows{{QString(), u"s"_s, QString(), QString()},
                                        {QString(), u"s"_s, QString(), QString()}};
    QTest::newRow("blanks stay") << QByteArray(R"([{"display_name":" A ","status":" online "}])")
                                 << Rows{{u" A "_s, QString(), QString(), u" online "_s}};
}

void ProjectListTest::everyElementBecomesARow()
{
    QFETCH(QByteArray, instances);
    QFETCH(Rows, rows);
    Run run;
    run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":)" + instances + '}'));
    QVERIFY(run.startSignedIn());
    QCOMPARE(rowsOf(run.view()), rows);
    QCOMPARE(run.view().status(), u"Loaded %1 Tarnwick project(s)."_s.arg(rows.size()));
}

void ProjectListTest::aReplyWithoutAListEmptiesTheTable_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("empty list") << QByteArray(R"({"instances":[]})");
    QTest::newRow("no list") << QByteArray("{}");
    QTest::newRow("object") << QByteArray(R"({"instances":{"display_name":"A"}})");
    QTest::newRow("text") << QByteArray(R"({"instances":"A"})");
    QTest::newRow("null") << QByteArray(R"({"instances":null})");
    QTest::newRow("list at the top") << QByteArray(R"([{"display_name":"A"}])");
    QTest::newRow("no JSON") << QByteArray("instances");
    QTest::newRow("empty body") << QByteArray();
}

void ProjectListTest::aReplyWithoutAListEmptiesTheTable()
{
    QFETCH(QByteArray, body);
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().table()->rowCount(), 1);
    run.server.reply(callPath(Call::Instances), Reply::json(200, body));
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 0);
}

void ProjectListTest::theCountIsPlainDecimal()
{
    Run run;
    QByteArray list = "{}";
    for (int more = 1; more < 1234; ++more) {
        list += ",{}";
    }
    run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[)" + list + "]}"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().status(), u"Loaded 1234 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 1234);
}

void ProjectListTest::aServiceMessageIsNotShown()
{
    Run run;
    run.server.reply(callPath(Call::Instances),
                     Reply::json(200, R"({"message":"Hello","error":"None","instances":[{}]})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void ProjectListTest::theRowsAreThereBeforeTheStatusSaysSo()
{
    Run run;
    run.startLinked();
    int times = 0;
    const support::EnabledWatch watch(run.view().button(u"Open Selected Project"), [&](bool enabled) {
        ++times;
        QVERIFY(enabled);
        QCOMPARE(run.view().table()->rowCount(), 1);
        QCOMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
    });
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(times, 1);
}

void ProjectListTest::refreshAsksForTheListOnly()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.forgetRequests();
    run.server.hold(callPath(Call::Instances));
    run.press(u"Refresh");
    QCOMPARE(run.view().status(), u"Refreshing your Tarnwick projects..."_s);
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    const support::RecordedRequest request = run.server.requests().constFirst();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.target, "/api/pc/instances");
    QCOMPARE(request.header("Authorization"), "Bearer token-1");
    QCOMPARE(request.body, "");
    QCOMPARE(run.view().table()->rowCount(), 1);

    run.server.release(callPath(Call::Instances));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 2);
    QCOMPARE(run.server.count(callPath(Call::Session)), 0);
}

void ProjectListTest::aRefreshWhileOneIsInFlightSetsTheTextAndSendsNothing()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.hold(callPath(Call::Instances));
    run.press(u"Refresh");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    QVERIFY(run.markerComesBack());
    run.forcePress(u"Refresh");
    QCOMPARE(run.view().status(), u"Refreshing your Tarnwick projects..."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 2);
}

void ProjectListTest::aRefreshWhileUnlinkedSetsTheTextAndSendsNothing()
{
    Run run;
    run.start();
    run.forcePress(u"Refresh");
    QCOMPARE(run.view().status(), u"Refreshing your Tarnwick projects..."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 1);
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 1);
}

void ProjectListTest::aCreationIsFollowedByAFetch()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{"slug":"neon"},{"slug":"new"}]})"));
    run.view().line(u"GDPS Name")->setText(u"New"_s);
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.view().status(), u"Loaded 2 Tarnwick project(s)."_s);
    QCOMPARE(run.server.count(callPath(Call::Instances)), 2);
    QCOMPARE(run.view().row(1).at(1), u"new"_s);
}

void ProjectListTest::aSessionCheckDuringAFetchSendsNoSecondOneAndSaysNothing()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.hold(callPath(Call::Instances));
    run.press(u"Refresh");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.tick();
    QTRY_COMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 2);
}

void ProjectListTest::aFailedFetchKeepsTheRowsAndTheAccount_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shown");
    QTest::newRow("server error") << 500 << QByteArray(R"({"instances":[]})") << u"Tarnwick returned HTTP 500."_s;
    QTest::newRow("unauthorized") << 401 << QByteArray(R"({"message":"Sign in again."})") << u"Sign in again."_s;
    QTest::newRow("forbidden") << 403 << QByteArray(R"({"error":"Banned"})") << u"Banned"_s;
    QTest::newRow("connection closed") << 0 << QByteArray() << u"Connection closed"_s;
}

void ProjectListTest::aFailedFetchKeepsTheRowsAndTheAccount()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, shown);
    Run run;
    QVERIFY(run.startSignedIn());
    const Rows rows = rowsOf(run.view());
    const QStringList account = run.view().account();
    QVERIFY(QFile::remove(run.home().stateFile()));
    run.server.reply(callPath(Call::Instances), status == 0 ? Reply::closeWithoutAnswer() : Reply::json(status, body));
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), shown);
    QCOMPARE(rowsOf(run.view()), rows);
    QCOMPARE(run.view().account(), account);
    QCOMPARE(run.view().combo(u"Core")->currentText(), u"Core A"_s);
    QVERIFY(run.view().button(u"Refresh")->isEnabled());
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
    QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
    QVERIFY(!QFile::exists(run.home().stateFile()));
    // The records behind the rows are the old ones, too.
    run.press(u"Open Selected Project");
    QCOMPARE(run.opened.last(), QUrl(u"https://manage.example/neon"_s));
}

void ProjectListTest::aFailedFetchAtStartLeavesTheDesktopLinked()
{
    Run run;
    run.server.reply(callPath(Call::Instances), Reply::json(401, R"({"message":"Not now"})"));
    run.startLinked();
    QTRY_COMPARE(run.view().status(), u"Not now"_s);
    QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
}

QTEST_MAIN(ProjectListTest)
#include "project_list_test.moc"
