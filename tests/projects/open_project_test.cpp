#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/message_catcher.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

#include <array>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Open Selected Project" opens.
class OpenProjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void thePageOfTheProjectOpens_data();
    void thePageOfTheProjectOpens();
    void aProjectWithoutAnyPageOpensNothingAndSaysNothing_data();
    void aProjectWithoutAnyPageOpensNothingAndSaysNothing();
    void noAddressIsFilteredOut_data();
    void noAddressIsFilteredOut();
    void theCurrentRowDecides();
    void withoutACurrentRowNothingOpens();
    void aRowThatShowsNoProjectOpensNothing();
    void openingSaysNothingAndSendsNothing();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static Reply listOf(const QByteArray& elements) { return Reply::json(200, R"({"instances":[)" + elements + "]}"); }
};

namespace {

/// Values that are no text, and count as none.
constexpr std::array openProjectNoTexts = {"null", "5", "true", R"(["https://t.example"])",
                                           R"({"url":"https://t.example"})"};

} // namespace

void OpenProjectTest::thePageOfTheProjectOpens_data()
{
    QTest::addColumn<QByteArray>("project");
    QTest::addColumn<QByteArray>("opened");
    QTest::newRow("both pages") << QByteArray(
                                       R"({"manage_url":"https://m.example/1","public_url":"https://p.example/1"})")
                                << QByteArray("https://m.example/1");
    QTest::newRow("management page only")
        << QByteArray(R"({"manage_url":"https://m.example/2"})") << QByteArray("https://m.example/2");
    QTest::newRow("empty management page")
        << QByteArray(R"({"manage_url":"","public_url":"https://p.example/3"})") << QByteArray("https://p.example/3");
    QTest::newRow("no management page") << QByteArray(R"({"public_url":"https://p.example/4"})")
                                        << QByteArray("https://p.example/4");
    for (const char* value : openProjectNoTexts) {
        QTest::addRow("management page %s", value)
            << R"({"manage_url":)" + QByteArray(value) + R"(,"public_url":"https://p.example/5"})"
            << QByteArray("https://p.example/5");
    }
    QTest::newRow("parsed tolerantly") << QByteArray(R"({"manage_url":"https://m.example/a b?c=%zz"})")
                                       << QByteArray("https://m.example/a%20b?c=%25zz");
}

void OpenProjectTest::thePageOfTheProjectOpens()
{
    QFETCH(QByteArray, project);
    QFETCH(QByteArray, opened);
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(project));
    QVERIFY(run.startSignedIn());
    run.press(u"Open Selected Project");
    QCOMPARE(run.opened.count(), 1);
    QCOMPARE(run.opened.last().toEncoded(), opened);
    QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void OpenProjectTest::aProjectWithoutAnyPageOpensNothingAndSaysNothing_data()
{
    QTest::addColumn<QByteArray>("project");
    QTest::newRow("no pages") << QByteArray("{}");
    QTest::newRow("empty pages") << QByteArray(R"({"manage_url":"","public_url":""})");
    for (const char* value : openProjectNoTexts) {
        QTest::addRow("management page %s", value) << R"({"manage_url":)" + QByteArray(value) + '}';
        QTest::addRow("public page %s", value) << R"({"public_url":)" + QByteArray(value) + '}';
    }
}

void OpenProjectTest::aProjectWithoutAnyPageOpensNothingAndSaysNothing()
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

void OpenProjectTest::noAddressIsFilteredOut_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("plain http") << u"http://m.example/"_s;
    QTest::newRow("local file") << u"file:///etc/hosts"_s;
    QTest::newRow("any scheme") << u"odd:payload"_s;
    QTest::newRow("relative") << u"/manage/neon"_s;
}

void OpenProjectTest::noAddressIsFilteredOut()
{
    QFETCH(QString, address);
    const support::OpenedUrls everything({u"odd"_s, QString()});
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"manage_url":")" + address.toUtf8() + R"("})"));
    QVERIFY(run.startSignedIn());
    run.press(u"Open Selected Project");
    QCOMPARE(everything.urls() + run.opened.urls(), QList<QUrl>{QUrl(address)});
}

void OpenProjectTest::theCurrentRowDecides()
{
    Run run;
    run.server.reply(callPath(Call::Instances),
                     listOf(R"({"manage_url":"https://m.example/0"},{"manage_url":"https://m.example/1"},)"
                            R"({"manage_url":"https://m.example/2"})"));
    QVERIFY(run.startSignedIn());
    run.press(u"Open Selected Project");
    run.view().table()->selectRow(2);
    run.press(u"Open Selected Project");
    run.view().table()->setCurrentCell(1, 3);
    run.press(u"Open Selected Project");
    QCOMPARE(run.opened.urls(), (QList<QUrl>{QUrl(u"https://m.example/0"_s), QUrl(u"https://m.example/2"_s),
                                             QUrl(u"https://m.example/1"_s)}));
}

void OpenProjectTest::withoutACurrentRowNothingOpens()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().table()->setCurrentCell(-1, -1);
    QCOMPARE(run.view().table()->currentRow(), -1);
    run.forcePress(u"Open Selected Project");
    QVERIFY(run.opened.isEmpty());
    QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void OpenProjectTest::aRowThatShowsNoProjectOpensNothing()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().table()->insertRow(1);
    run.view().table()->selectRow(1);
    QCOMPARE(run.view().table()->currentRow(), 1);
    run.press(u"Open Selected Project");
    QVERIFY(run.opened.isEmpty());
    QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void OpenProjectTest::openingSaysNothingAndSendsNothing()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"manage_url":"nobody-opens-this:1"})"));
    QVERIFY(run.startSignedIn());
    run.server.forgetRequests();
    {
        // The desktop has something to say about a scheme that nobody handles; the client has not.
        const support::MessageCatcher desktop;
        run.press(u"Open Selected Project");
    }
    QVERIFY(run.opened.isEmpty());
    QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 1);
}

QTEST_MAIN(OpenProjectTest)
#include "open_project_test.moc"
