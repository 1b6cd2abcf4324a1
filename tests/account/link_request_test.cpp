#include "api/service_host.h"
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

/// From the press of "Generate Link Code" to the code in the window.
class LinkRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void thePressAsksTheServiceForACode();
    void theRequestCarriesNoTokenEvenWhenLinked();
    void theStateIsOnDiskBeforeTheRequestIsSent();
    void aSecondPressWhileLinkStartIsInFlightSendsNothing();
    void theCodeIsShownThenSavedThenAnnounced();
    void theReadyTextNamesTheCodeAndThePublicHost();
    void theTimerRestsUntilACodeStartsItAt1500();
    void aReplyWithoutACodeShowsTheReadyTextAndDoesNotPoll_data();
    void aReplyWithoutACodeShowsTheReadyTextAndDoesNotPoll();
    void aReplyWithoutACodeLeavesARunningTimerRunning();
    void aNewCodeReplacesTheOldOne();
    void aNewCodeWhileLinkedKeepsTheLink();
    void aFailureIsShownAndLeavesEverythingElse_data();
    void aFailureIsShownAndLeavesEverythingElse();
    void aFailureBeforeAnyCodeDoesNotPoll();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QString readyText(const QString& code)
    {
        return u"Code "_s + code + u" is ready. Approve it at "_s + publicHost() + u"/link/pc before it expires."_s;
    }
};

void LinkRequestTest::thePressAsksTheServiceForACode()
{
    Run run;
    run.start();
    run.server.hold(callPath(Call::LinkStart));
    run.press(u"Generate Link Code");
    QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);

    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkStart)), 1);
    QCOMPARE(run.server.count(), 1);
    const support::RecordedRequest request = run.server.requests().constFirst();
    QCOMPARE(request.method, "POST");
    QCOMPARE(request.target, "/api/pc/link/start");
    QCOMPARE(request.body, "device_id=desk-1");
    QCOMPARE(request.header("Content-Type"), "application/x-www-form-urlencoded");
    QVERIFY(!request.hasHeader("Authorization"));
    QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);
}

void LinkRequestTest::theRequestCarriesNoTokenEvenWhenLinked()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.server.count(callPath(Call::LinkStart)), 1);
    QVERIFY(!run.server.requests(callPath(Call::LinkStart)).constFirst().hasHeader("Authorization"));
}

void LinkRequestTest::theStateIsOnDiskBeforeTheRequestIsSent()
{
    Run run;
    run.start();
    run.server.hold(callPath(Call::LinkStart));
    run.home().writeState("{}");
    run.view().line(u"Tarnwick URL")->setText(u" "_s + run.server.origin() + u"// "_s);
    // The button is disabled when the request is about to be built.
    QByteArray stateWhenSending;
    const support::EnabledWatch watch(run.view().button(u"Generate Link Code"),
                                      [&run, &stateWhenSending](bool) { stateWhenSending = run.home().readState(); });
    run.press(u"Generate Link Code");

    const QByteArray expected =
        "{\n    \"device_id\": \"desk-1\",\n    \"origin\": \"" + run.server.origin().toUtf8() + "\"\n}\n";
    QCOMPARE(stateWhenSending, expected);
    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkStart)), 1);
    QCOMPARE(run.home().readState(), expected);
}

void LinkRequestTest::aSecondPressWhileLinkStartIsInFlightSendsNothing()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.hold(callPath(Call::LinkStart));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkStart)), 1);
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QVERIFY(QFile::remove(run.home().stateFile()));

    run.forcePress(u"Generate Link Code");
    QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);
    QVERIFY(!QFile::exists(run.home().stateFile()));

    run.server.release(callPath(Call::LinkStart));
    QTRY_COMPARE(run.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 2);
}

void LinkRequestTest::theCodeIsShownThenSavedThenAnnounced()
{
    Run run;
    run.start();
    int changes = 0;
    connect(run.view().line(u"Link code"), &QLineEdit::textChanged, this, [&] {
        ++changes;
        QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);
        QVERIFY(!run.pollTimer()->isActive());
        QVERIFY(QFile::remove(run.home().stateFile()));
    });
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QCOMPARE(changes, 1);
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void LinkRequestTest::theReadyTextNamesTheCodeAndThePublicHost()
{
    Run run;
    run.start();
    run.server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-%1","message":"Not this one"})"));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.view().status(), readyText(u"TWPC-%1"_s));
}

void LinkRequestTest::theTimerRestsUntilACodeStartsItAt1500()
{
    Run run;
    run.start();
    const QTimer* timer = run.pollTimer();
    QVERIFY(timer != nullptr);
    QCOMPARE(timer->interval(), 2000);
    QVERIFY(!timer->isActive());

    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QCOMPARE(timer->interval(), 1500);
    QVERIFY(timer->isActive());
    QVERIFY(!timer->isSingleShot());
}

void LinkRequestTest::aReplyWithoutACodeShowsTheReadyTextAndDoesNotPoll_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no code") << QByteArray("{}");
    QTest::newRow("empty code") << QByteArray(R"({"code":""})");
    QTest::newRow("number") << QByteArray(R"({"code":42})");
    QTest::newRow("null") << QByteArray(R"({"code":null})");
    QTest::newRow("array of texts") << QByteArray(R"({"code":["TWPC-1"]})");
    QTest::newRow("no JSON object") << QByteArray(R"(["TWPC-1"])");
    QTest::newRow("empty body") << QByteArray();
}

void LinkRequestTest::aReplyWithoutACodeShowsTheReadyTextAndDoesNotPoll()
{
    QFETCH(QByteArray, body);
    Run run;
    run.start();
    run.server.reply(callPath(Call::LinkStart), Reply::json(200, body));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.view().status(), readyText({}));
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
    QVERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.pollTimer()->interval(), 2000);
}

void LinkRequestTest::aReplyWithoutACodeLeavesARunningTimerRunning()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    run.server.reply(callPath(Call::LinkStart), Reply::json(200, "{}"));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.view().status(), readyText({}));
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
    QVERIFY(run.pollTimer()->isActive());

    run.tick();
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 0);
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
}

void LinkRequestTest::aNewCodeReplacesTheOldOne()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    run.pollTimer()->setInterval(60000);
    QVERIFY(run.showLinkCode(u"TWPC-2"_s, u"https://pair.example/2"_s));
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-2"_s);
    QCOMPARE(run.pollTimer()->interval(), 1500);

    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/2"_s));
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
    QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-2&device_id=desk-1");
}

void LinkRequestTest::aNewCodeWhileLinkedKeepsTheLink()
{
    Run run;
    QVERIFY(run.startSignedIn());
    const QStringList account = run.view().account();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QVERIFY(run.pollTimer()->isActive());
    QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
    QCOMPARE(run.view().account(), account);
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
}

void LinkRequestTest::aFailureIsShownAndLeavesEverythingElse_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<QString>("shown");
    QTest::newRow("message") << Reply::json(503, R"({"message":"Maintenance","code":"TWPC-9"})") << u"Maintenance"_s;
    QTest::newRow("error text") << Reply::json(429, R"({"error":"Slow down"})") << u"Slow down"_s;
    QTest::newRow("status only") << Reply::html(500, "<html></html>") << u"Tarnwick returned HTTP 500."_s;
    QTest::newRow("unknown path") << Reply::json(404, "{}") << u"Tarnwick returned HTTP 404."_s;
    QTest::newRow("gone") << Reply::json(410, "{}") << u"Tarnwick returned HTTP 410."_s;
    // Qt has no words for what keeps it from sending a form twice.
    QTest::newRow("closed without an answer") << Reply::closeWithoutAnswer() << u"Unknown error"_s;
    QTest::newRow("half the headers, then a reset")
        << Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: appl").thenReset() << u"Unknown error"_s;
}

void LinkRequestTest::aFailureIsShownAndLeavesEverythingElse()
{
    QFETCH(Reply, reply);
    QFETCH(QString, shown);
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    run.pollTimer()->setInterval(60000);

    run.server.reply(callPath(Call::LinkStart), reply);
    run.press(u"Generate Link Code");
    QVERIFY(QFile::remove(run.home().stateFile()));
    QTRY_COMPARE(run.view().status(), shown);
    QVERIFY(!QFile::exists(run.home().stateFile()));
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    QVERIFY(run.pollTimer()->isActive());
    QCOMPARE(run.pollTimer()->interval(), 60000);

    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
    QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-1&device_id=desk-1");
}

void LinkRequestTest::aFailureBeforeAnyCodeDoesNotPoll()
{
    Run run;
    run.start();
    QVERIFY(run.markerComesBack());
    QVERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.pollTimer()->interval(), 2000);
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
}

QTEST_MAIN(LinkRequestTest)
#include "link_request_test.moc"
