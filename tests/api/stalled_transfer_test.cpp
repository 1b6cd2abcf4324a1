// A stalled transfer is aborted. Built with a shorter timeout than the real one, which request_bytes_test checks.
#include "support/client_test.h"

#include <QNetworkReply>

using support::Call;
using support::ClientRun;
using support::Reply;

namespace {

const QString stalledText = u"Operation canceled"_s;

Reply stalledInTheBody(int status)
{
    return Reply::json(status, R"({"message":"never read"})").cutBodyAfter(12).thenSilence();
}

} // namespace

class StalledTransferTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStallIsATransferError_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        QTest::newRow("no answer to a GET") << Call::Instances << Reply::never() << stalledText;
        QTest::newRow("no answer to a POST") << Call::CreateInstance << Reply::never() << stalledText;
        QTest::newRow("half a body") << Call::CreateInstance << stalledInTheBody(200) << stalledText;
        // The message has arrived completely, but an aborted reply is not read.
        QTest::newRow("a whole object and no end")
            << Call::Instances << Reply::json(200, R"({"message":"never read"})").contentLength(100).thenSilence()
            << stalledText;
        QTest::newRow("half a body of a 503")
            << Call::Instances << stalledInTheBody(503) << u"Tarnwick returned HTTP 503."_s;
    }

    void aStallIsATransferError()
    {
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        ClientRun run;
        QVERIFY(run.prepare(call));
        run.server.replies(callPath(call), {reply, Reply::json(500, R"({"message":"Second answer"})")});
        run.server.forgetRequests();
        run.bringAbout(call);
        QTRY_COMPARE(run.view().status(), shown);
        QTRY_COMPARE(run.window().findChildren<QNetworkReply*>().size(), 0);
        QCOMPARE(run.view().table()->rowCount(), 1);

        // The kind is no longer busy, and the form has kept its contents: the next press sends.
        run.bringAbout(call);
        QTRY_COMPARE(run.view().status(), u"Second answer"_s);
        QCOMPARE(run.server.count(callPath(call)), 2);
    }

    void aStalledTlsHandshakeIsATransferError()
    {
        const support::ScriptedServer silent(support::HandshakeFault::Silence);
        ClientRun run;
        run.start();
        run.view().line(u"Tarnwick URL")->setText(silent.origin());
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().status(), stalledText);
        QCOMPARE(silent.connectionCount(), 1);
        QCOMPARE(silent.httpBytesReceived(), 0);
        QVERIFY(run.view().button(u"Generate Link Code")->isEnabled());
    }

    void aStalledSessionCheckSignsOut()
    {
        ClientRun run;
        run.server.reply(callPath(Call::Session), Reply::never());
        run.startLinked();
        QTRY_COMPARE(run.view().status(), stalledText);
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    }

    void aStalledPollStopsPollingAndKeepsTheCode()
    {
        ClientRun run;
        QVERIFY(run.prepare(Call::LinkPoll));
        run.server.reply(callPath(Call::LinkPoll), Reply::never());
        run.tick();
        QVERIFY(run.pollTimer()->isActive());
        QTRY_COMPARE(run.view().status(), stalledText);
        QVERIFY(!run.pollTimer()->isActive());
        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);

        // The kind is no longer busy: a new code is polled for.
        run.server.reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"Polled again"})"));
        QVERIFY(run.showLinkCode(u"TWPC-TEST02"_s));
        run.tick();
        QTRY_COMPARE(run.view().status(), u"Polled again"_s);
    }

    void aStallAfterAPendingStatusKeepsWaiting()
    {
        ClientRun run;
        QVERIFY(run.prepare(Call::LinkPoll));
        run.server.reply(callPath(Call::LinkPoll), stalledInTheBody(202));
        run.tick();
        QTRY_COMPARE(run.view().status(), u"Waiting for approval at " TARNWICK_PUBLIC_HOST "/link/pc."_s);
        QVERIFY(run.pollTimer()->isActive());
    }

    void aMovingTransferMayTakeLonger()
    {
        ClientRun run;
        QVERIFY(run.startSignedIn());
        // Forty steps take three times the timeout, and no pause between them comes near the timeout.
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, R"({"instances":[{},{}])" + QByteArray(20, ' ') + '}').dripBody(1, 45));
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), u"Loaded 2 Tarnwick project(s)."_s, 20000);
    }

    void aMovingTransferThatIsKeptBackMayNot_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("401, demands a password") << 401;
        QTest::newRow("302, leads elsewhere") << 302;
    }

    void aMovingTransferThatIsKeptBackMayNot()
    {
        QFETCH(int, status);
        ClientRun run;
        QVERIFY(run.startSignedIn());
        // Qt reports nothing about such a body before it is complete. So no limit of size applies, only the timeout;
        // the body's own message or the redirect's target would come after seven times the timeout.
        const QByteArray body = R"({"message":"never read"})" + QByteArray(80, ' ');
        run.server.reply(callPath(Call::Instances),
                         Reply::json(status, body).header("Location", "/moved").dripBody(1, 45));
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), stalledText, 20000);
        QTRY_COMPARE(run.server.openConnectionCount(), 0);
        QCOMPARE(run.server.count("/moved"), 0);
    }
};

TARNWICK_TEST(StalledTransferTest)
#include "stalled_transfer_test.moc"
