#include "support/client_test.h"

#include <QProperty>
#include <QSignalSpy>
#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// The ticks of the poll timer, and the replies that keep it waiting.
class LinkPollTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTimerPollsByItself()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QTRY_COMPARE_WITH_TIMEOUT(run.server.count(callPath(Call::LinkPoll)), 2, 15000);
        QTRY_COMPARE(run.view().status(), waitingText());
        QVERIFY(run.pollTimer()->isActive());
    }

    void aPollGoesToTheBaseUrlOfTheMoment()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u"/hosting/"_s);
        run.tick();
        QTRY_COMPARE(run.server.count("/hosting/api/pc/link/poll"), 1);
        QCOMPARE(run.server.requests("/hosting/api/pc/link/poll").constFirst().query(), "code=TWPC-1&device_id=desk-1");
    }

    void aTickWithoutACodeSendsNothing()
    {
        Run run;
        run.start();
        run.tick();
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
        QCOMPARE(run.server.connectionCount(), 1);
    }

    void theTimerKeepsRunningWhileAPollIsInFlight()
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

    void aPendingReplyShowsItsMessageOrTheWaitingText_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("shown");
        QTest::newRow("message") << QByteArray(R"({"message":" Still waiting "})") << u" Still waiting "_s;
        QTest::newRow("empty message") << QByteArray(R"({"message":""})") << QString();
        QTest::newRow("empty body") << QByteArray() << waitingText();
        QTest::newRow("number") << QByteArray(R"({"message":7})") << waitingText();
        QTest::newRow("error is no message") << QByteArray(R"({"error":"Bad"})") << waitingText();
        QTest::newRow("token is not taken") << QByteArray(R"({"access_token":"early"})") << waitingText();
    }

    void aPendingReplyShowsItsMessageOrTheWaitingText()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, shown);
        Run run;
        run.start();
        QVERIFY(run.pollWith(Reply::json(202, body)));
        QTRY_COMPARE(run.view().status(), shown);
        QVERIFY(run.pollTimer()->isActive());
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    }

    void aPendingReplyChangesNothingButTheStatus()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.pollTimer()->setInterval(600000);
        int timerChanges = 0;
        const auto notifier = run.pollTimer()->bindableActive().addNotifier([&timerChanges] { ++timerChanges; });
        run.tick();
        QTRY_COMPARE(run.view().status(), waitingText());
        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
        // The timer kept running: starting it again would have stopped it first.
        QCOMPARE(timerChanges, 0);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
    }

    void aLatePendingReplyRestartsTheStoppedTimerInVain()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        run.pollTimer()->setInterval(777);
        QVERIFY(run.holdCall(Call::LinkPoll));
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

private:
    using Run = support::ClientRun;

    static QString waitingText() { return u"Waiting for approval at "_s + support::publicHost() + u"/link/pc."_s; }
};

TARNWICK_TEST(LinkPollTest)
#include "link_poll_test.moc"
