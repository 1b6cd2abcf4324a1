#include "api/service_host.h"
#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QFile>
#include <QObject>
#include <QProperty>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// The ticks of the poll timer, and the replies that keep it waiting.
class LinkPollTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theTimerPollsByItself();
    void aPollNamesCodeAndDeviceAndCarriesNoToken();
    void aPollStaysAGetWhenTheBaseUrlHasAPath();
    void aTickWithoutACodeSendsNothing();
    void aTickWhileAPollIsInFlightIsSkippedNotQueued();
    void theTimerKeepsRunningWhileAPollIsInFlight();
    void aPendingReplyShowsItsMessageOrTheWaitingText_data();
    void aPendingReplyShowsItsMessageOrTheWaitingText();
    void aPendingReplyChangesNothingButTheStatus();
    void aLatePendingReplyRestartsTheStoppedTimerInVain();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QString waitingText() { return u"Waiting for approval at "_s + publicHost() + u"/link/pc."_s; }
};

void LinkPollTest::theTimerPollsByItself()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QTRY_COMPARE_WITH_TIMEOUT(run.server.count(callPath(Call::LinkPoll)), 2, 15000);
    QTRY_COMPARE(run.view().status(), waitingText());
    QVERIFY(run.pollTimer()->isActive());
}

void LinkPollTest::aPollNamesCodeAndDeviceAndCarriesNoToken()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.showLinkCode(u"TWPC-A&B=C"_s));
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
    const support::RecordedRequest request = run.server.requests(callPath(Call::LinkPoll)).constFirst();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.target, "/api/pc/link/poll?code=TWPC-A%26B%3DC&device_id=desk-1");
    QCOMPARE(request.body, "");
    QVERIFY(!request.hasHeader("Content-Type"));
    QVERIFY(!request.hasHeader("Authorization"));
}

void LinkPollTest::aPollStaysAGetWhenTheBaseUrlHasAPath()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u"/hosting/"_s);
    run.tick();
    QTRY_COMPARE(run.server.count("/hosting/api/pc/link/poll"), 1);
    QCOMPARE(run.server.requests("/hosting/api/pc/link/poll").constFirst().query(), "code=TWPC-1&device_id=desk-1");
}

void LinkPollTest::aTickWithoutACodeSendsNothing()
{
    Run run;
    run.start();
    run.tick();
    run.tick();
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 1);
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 1);
}

void LinkPollTest::aTickWhileAPollIsInFlightIsSkippedNotQueued()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.pollTimer()->setInterval(600000);
    run.server.hold(callPath(Call::LinkPoll));
    run.tick();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkPoll)), 1);
    run.tick();
    run.tick();
    run.server.release(callPath(Call::LinkPoll));
    QTRY_COMPARE(run.view().status(), waitingText());

    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 2);
}

void LinkPollTest::theTimerKeepsRunningWhileAPollIsInFlight()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.server.hold(callPath(Call::LinkPoll));
    QSignalSpy ticks(run.pollTimer(), &QTimer::timeout);
    run.pollTimer()->setInterval(1);
    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkPoll)), 1);
    const qsizetype ticksBefore = ticks.count();
    QTRY_VERIFY(ticks.count() >= ticksBefore + 5);
    QVERIFY(run.pollTimer()->isActive());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
}

void LinkPollTest::aPendingReplyShowsItsMessageOrTheWaitingText_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shown");
    QTest::newRow("message") << QByteArray(R"({"message":"Still waiting"})") << u"Still waiting"_s;
    QTest::newRow("empty message") << QByteArray(R"({"message":""})") << QString();
    QTest::newRow("message with blanks") << QByteArray(R"({"message":" a "})") << u" a "_s;
    QTest::newRow("empty body") << QByteArray() << waitingText();
    QTest::newRow("no message") << QByteArray("{}") << waitingText();
    QTest::newRow("number") << QByteArray(R"({"message":7})") << waitingText();
    QTest::newRow("null") << QByteArray(R"({"message":null})") << waitingText();
    QTest::newRow("object") << QByteArray(R"({"message":{"text":"Hi"}})") << waitingText();
    QTest::newRow("error is no message") << QByteArray(R"({"error":"Bad"})") << waitingText();
    QTest::newRow("token is not taken") << QByteArray(R"({"access_token":"early"})") << waitingText();
    QTest::newRow("no JSON object") << QByteArray("waiting") << waitingText();
}

void LinkPollTest::aPendingReplyShowsItsMessageOrTheWaitingText()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, shown);
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.server.reply(callPath(Call::LinkPoll), Reply::json(202, body));
    run.tick();
    QTRY_COMPARE(run.view().status(), shown);
    QVERIFY(run.pollTimer()->isActive());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void LinkPollTest::aPendingReplyChangesNothingButTheStatus()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    run.pollTimer()->setInterval(600000);
    int timerChanges = 0;
    const auto notifier = run.pollTimer()->bindableActive().addNotifier([&timerChanges] { ++timerChanges; });
    QVERIFY(QFile::remove(run.home().stateFile()));
    run.tick();
    QTRY_COMPARE(run.view().status(), waitingText());
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    QVERIFY(!QFile::exists(run.home().stateFile()));
    // The timer ran on: starting it again would have stopped it first.
    QCOMPARE(timerChanges, 0);
    QVERIFY(run.pollTimer()->isActive());
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
}

void LinkPollTest::aLatePendingReplyRestartsTheStoppedTimerInVain()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.pollTimer()->setInterval(777);
    run.server.hold(callPath(Call::LinkPoll));
    run.tick();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkPoll)), 1);
    run.press(u"Unlink");
    QVERIFY(!run.pollTimer()->isActive());

    run.server.release(callPath(Call::LinkPoll));
    QTRY_COMPARE(run.view().status(), waitingText());
    QVERIFY(run.pollTimer()->isActive());
    QCOMPARE(run.pollTimer()->interval(), 777);
    QCOMPARE(run.view().line(u"Link code")->text(), QString());

    run.tick();
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
}

QTEST_MAIN(LinkPollTest)
#include "link_poll_test.moc"
