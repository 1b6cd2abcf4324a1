#include "support/client_test.h"

#include <QItemSelectionModel>
#include <QRegularExpression>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Open Selected Project" opens.
class OpenProjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePageOfTheProjectOpens_data()
    {
        QTest::addColumn<QByteArray>("project");
        QTest::addColumn<QByteArray>("opened");
        const auto row = [](const char* name, const char* project, const char* opened) {
            QTest::newRow(name) << support::json(project) << QByteArray(opened);
        };
        row("both pages", "{'manage_url':'https://m.example/1','public_url':'https://p.example/1'}",
            "https://m.example/1");
        row("management page only", "{'manage_url':'https://m.example/2'}", "https://m.example/2");
        row("empty management page", "{'manage_url':'','public_url':'https://p.example/3'}", "https://p.example/3");
        row("no management page", "{'public_url':'https://p.example/4'}", "https://p.example/4");
        row("management page is null", "{'manage_url':null,'public_url':'https://p.example/5'}", "https://p.example/5");
        row("management page is a number", "{'manage_url':5,'public_url':'https://p.example/6'}",
            "https://p.example/6");
        row("management page of blanks", "{'manage_url':' ','public_url':'https://p.example/7'}", "%20");
        row("blank behind the page", "{'public_url':'https://p.example/8 '}", "https://p.example/8%20");
        row("parsed tolerantly", "{'manage_url':'https://m.example/a b?c=%zz'}", "https://m.example/a%20b?c=%25zz");
        row("plain http", "{'manage_url':'http://m.example/'}", "http://m.example/");
        row("local file", "{'manage_url':'file:///etc/hosts'}", "file:///etc/hosts");
        row("any scheme", "{'manage_url':'odd:payload'}", "odd:payload");
        row("relative", "{'manage_url':'/manage/neon'}", "/manage/neon");
    }

    void thePageOfTheProjectOpens()
    {
        QFETCH(QByteArray, project);
        QFETCH(QByteArray, opened);
        const support::OpenedUrls more({u"odd"_s, QString()});
        Run run;
        run.server.reply(callPath(Call::Instances), listOf(project));
        QVERIFY(run.startSignedIn());
        run.press(u"Open Selected Project");
        const QList<QUrl> urls = more.urls() + run.opened.urls();
        QCOMPARE(urls.size(), 1);
        QCOMPARE(urls.constFirst().toEncoded(), opened);
    }

    void aProjectWithoutAnyPageOpensNothing_data()
    {
        QTest::addColumn<QByteArray>("project");
        for (const char* project : {"{}", "{'manage_url':'','public_url':''}", "{'public_url':5}"}) {
            QTest::newRow(project) << support::json(project);
        }
    }

    void aProjectWithoutAnyPageOpensNothing()
    {
        QFETCH(QByteArray, project);
        const support::OpenedUrls relative({QString()});
        Run run;
        run.server.reply(callPath(Call::Instances), listOf(project));
        QVERIFY(run.startSignedIn());
        QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
        run.press(u"Open Selected Project");
        QVERIFY(run.opened.isEmpty());
        QVERIFY(relative.isEmpty());
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    }

    void theCurrentRowDecidesAndNotTheSelectedOne()
    {
        Run run;
        run.server.reply(callPath(Call::Instances), listOf(support::json("{'manage_url':'https://m.example/0'},"
                                                                         "{'manage_url':'https://m.example/1'},"
                                                                         "{'manage_url':'https://m.example/2'}")));
        QVERIFY(run.startSignedIn());
        QTableWidget* table = run.view().table();
        run.press(u"Open Selected Project");
        table->selectRow(2);
        run.press(u"Open Selected Project");
        table->setCurrentCell(1, 3, QItemSelectionModel::NoUpdate);
        QVERIFY(table->selectionModel()->isRowSelected(2));
        run.press(u"Open Selected Project");
        QCOMPARE(run.opened.urls(), (QList<QUrl>{QUrl(u"https://m.example/0"_s), QUrl(u"https://m.example/2"_s),
                                                 QUrl(u"https://m.example/1"_s)}));
    }

    void withoutACurrentRowNothingOpens()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().table()->setCurrentCell(-1, -1);
        run.forcePress(u"Open Selected Project");
        QVERIFY(run.opened.isEmpty());
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    }

    void aRowThatShowsNoProjectOpensNothing()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().table()->insertRow(1);
        run.view().table()->selectRow(1);
        run.press(u"Open Selected Project");
        QVERIFY(run.opened.isEmpty());
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    }

    void aPageThatNothingOpensChangesNothing()
    {
        Run run;
        run.server.reply(callPath(Call::Instances), listOf(support::json("{'manage_url':'nobody-opens-this:1'}")));
        QVERIFY(run.startSignedIn());
        run.server.forgetRequests();
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"openUrl.*nobody-opens-this:1"_s)); // printed by QDesktopServices
        run.press(u"Open Selected Project");
        QVERIFY(run.opened.isEmpty());
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
    }

private:
    using Run = support::ClientRun;

    static Reply listOf(const QByteArray& elements)
    {
        return Reply::json(200, support::json("{'instances':[") + elements + "]}");
    }
};

TARNWICK_TEST(OpenProjectTest)
#include "open_project_test.moc"
