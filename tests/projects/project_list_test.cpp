#include "support/client_test.h"

using support::Call;
using support::callPath;
using support::Reply;

/// Fetching the project list: when it is requested, how a reply is read, what a failure leaves unchanged.
class ProjectListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyElementBecomesARow_data()
    {
        QTest::addColumn<QByteArray>("instances");
        QTest::addColumn<Rows>("rows");
        const QStringList blank{QString(), QString(), QString(), QString()};
        QTest::newRow("complete") << support::json("[{'display_name':'Neon','slug':'neon','core_label':'Core A',"
                                                   "'status':'online','manage_url':'m','public_url':'p','id':7}]")
                                  << Rows{{u"Neon"_s, u"neon"_s, u"Core A"_s, u"online"_s}};
        QTest::newRow("a number among objects") << support::json("[{'display_name':'A','status':'online'},7]")
                                                << Rows{{u"A"_s, QString(), QString(), u"online"_s}, blank};
        QTest::newRow("slug as a number")
            << support::json("[{'display_name':'A','slug':42}]") << Rows{{u"A"_s, QString(), QString(), QString()}};
        QTest::newRow("other types") << support::json("[{'display_name':null,'slug':[],'core_label':{},'status':true}]")
                                     << Rows{blank};
        QTest::newRow("elements of other types")
            << support::json("[{},null,'text',['display_name']]") << Rows{blank, blank, blank, blank};
        QTest::newRow("the service's order, and duplicates")
            << support::json("[{'display_name':'b'},{'display_name':'C'},{'display_name':'a'},{'display_name':'b'}]")
            << Rows{{u"b"_s, QString(), QString(), QString()},
                    {u"C"_s, QString(), QString(), QString()},
                    {u"a"_s, QString(), QString(), QString()},
                    {u"b"_s, QString(), QString(), QString()}};
        QTest::newRow("blanks stay") << support::json(
                                            "[{'display_name':' A ','slug':' s ','core_label':' C ','status':' on '}]")
                                     << Rows{{u" A "_s, u" s "_s, u" C "_s, u" on "_s}};
    }

    void everyElementBecomesARow()
    {
        QFETCH(QByteArray, instances);
        QFETCH(Rows, rows);
        Run run;
        // The service's own texts are not shown.
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, R"({"message":"Hello","error":"None","instances":)" + instances + '}'));
        QVERIFY(run.startSignedIn());
        QCOMPARE(rowsOf(run.view()), rows);
        QCOMPARE(run.view().status(), u"Loaded %1 Tarnwick project(s)."_s.arg(rows.size()));
    }

    void aReplyWithoutAListEmptiesTheTable_data()
    {
        QTest::addColumn<QByteArray>("body");
        for (const char* body : {"{'instances':[]}", "{}", "{'instances':{'display_name':'A'}}", "{'instances':null}",
                                 "[{'display_name':'A'}]"}) {
            QTest::newRow(body) << support::json(body);
        }
    }

    void aReplyWithoutAListEmptiesTheTable()
    {
        QFETCH(QByteArray, body);
        Run run;
        QVERIFY(run.startSignedIn());
        QCOMPARE(run.view().table()->rowCount(), 1);
        run.server.reply(callPath(Call::Instances), Reply::json(200, body));
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
        QCOMPARE(run.view().table()->rowCount(), 0);
        run.forcePress(u"Open Selected Project");
        QVERIFY(run.opened.isEmpty());
    }

    void theCountIsPlainDecimal()
    {
        Run run;
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, "{\"instances\":[" + QByteArray("{},").repeated(1233) + "{}]}"));
        QVERIFY(run.startSignedIn());
        QCOMPARE(run.view().status(), u"Loaded 1234 Tarnwick project(s)."_s);
        QCOMPARE(run.view().table()->rowCount(), 1234);
    }

    void aRefreshWhileUnlinkedSetsTheTextOnly()
    {
        Run run;
        run.start();
        run.forcePress(u"Refresh");
        QCOMPARE(run.view().status(), u"Refreshing your Tarnwick projects..."_s);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
    }

    void aSessionCheckDuringAFetchSendsNoSecondOne()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.holdCall(Call::Instances));
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"token-2"})")));
        QTRY_COMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Instances)), 2);
    }

    void aFailedFetchKeepsTheRowsAndTheAccount_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        QTest::newRow("server error") << Reply::json(500, R"({"instances":[]})") << u"Tarnwick returned HTTP 500."_s;
        QTest::newRow("unauthorized") << Reply::json(401, R"({"message":"Sign in again."})") << u"Sign in again."_s;
        QTest::newRow("connection closed") << Reply::closeWithoutAnswer() << u"Connection closed"_s;
    }

    void aFailedFetchKeepsTheRowsAndTheAccount()
    {
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        Run run;
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, support::json("{'instances':[{'slug':'a','manage_url':'https://m.example/a'},"
                                                        "{'slug':'b','manage_url':'https://m.example/b'}]}")));
        QVERIFY(run.startSignedIn());
        run.view().table()->selectRow(1);
        const QStringList account = run.view().account();
        run.server.reply(callPath(Call::Instances), reply);
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), shown);
        QCOMPARE(rowsOf(run.view()),
                 (Rows{{QString(), u"a"_s, QString(), QString()}, {QString(), u"b"_s, QString(), QString()}}));
        QCOMPARE(run.view().table()->currentRow(), 1);
        QCOMPARE(run.view().account(), account);
        QCOMPARE(run.view().combo(u"Core")->currentText(), u"Core A"_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
        QVERIFY(run.view().button(u"Unlink")->isEnabled());
        // The old records behind the rows are kept, too.
        run.press(u"Open Selected Project");
        QCOMPARE(run.opened.last(), QUrl(u"https://m.example/b"_s));
    }

private:
    using Run = support::ClientRun;
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

TARNWICK_TEST(ProjectListTest)
#include "project_list_test.moc"
