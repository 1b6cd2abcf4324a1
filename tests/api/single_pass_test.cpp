// One press is one request: a POST whose connection closes without an answer is not sent again, because the service may
// have carried it out.
#include "support/client_test.h"

#include <algorithm>
#include <memory>

using support::Call;
using support::ClientRun;
using support::Reply;

namespace {

struct UnansweredEnd
{
    const char* name;
    Reply reply;
};

/// Ways in which a connection can end before the client has a reply.
QList<UnansweredEnd> unansweredEnds()
{
    return {{"closed", Reply::closeWithoutAnswer()},
            {"reset", Reply::resetWithoutAnswer()},
            {"half a status line", Reply::raw("HTTP/1.1 20")},
            {"half the headers, reset", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: applica").thenReset()},
            {"garbage", Reply::raw("\x16\x03\x01 this is no answer\r\n\r\n")}};
}

} // namespace

class SinglePassTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPostArrivesOnce_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("end");
        QTest::addColumn<bool>("isSecure");
        QTest::addColumn<bool>("isKeptAlive");
        const auto ends = unansweredEnds();
        for (const UnansweredEnd& end : ends) {
            for (const bool isSecure : {false, true}) {
                for (const bool isKeptAlive : {false, true}) {
                    QTest::addRow("creation, %s, %s, %s connection", end.name, isSecure ? "TLS" : "plain",
                                  isKeptAlive ? "kept-alive" : "fresh")
                        << Call::CreateInstance << end.reply << isSecure << isKeptAlive;
                }
            }
        }
        // A new window has no connection yet.
        QTest::newRow("code, fresh connection") << Call::LinkStart << ends.constFirst().reply << false << false;
    }

    void aPostArrivesOnce()
    {
        QFETCH(Call, call);
        QFETCH(Reply, end);
        QFETCH(bool, isSecure);
        QFETCH(bool, isKeptAlive);
        const auto run = newRun(isSecure);
        if (!isKeptAlive) {
            // The last reply before the creation closes its connection.
            run->server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{}]})").connectionClose());
        }
        QVERIFY(run->prepare(call));
        if (!isKeptAlive) {
            QTRY_COMPARE(run->server.openConnectionCount(), 0);
        }
        const QList<support::RecordedRequest> earlier = run->server.requests();
        run->server.reply(callPath(call), end);
        run->bringAbout(call);
        QTRY_COMPARE(run->view().status(), u"Unknown error"_s);
        // Newer versions of Qt open one more connection afterwards. Nothing may come through it.
        const int connection = run->server.requests(callPath(call)).constFirst().connection;
        QCOMPARE(std::ranges::count(earlier, connection, &support::RecordedRequest::connection) > 0, isKeptAlive);
        QCOMPARE(run->view().line(u"GDPS Name")->text(), call == Call::LinkStart ? QString() : u"Neon Burst"_s);

        // Everything sent before the marker has arrived by now. The marker is a code request itself.
        QVERIFY(run->markerComesBack());
        QCOMPARE(run->server.count(callPath(call)), call == Call::LinkStart ? 2 : 1);
    }

    void aConnectionThatEndedMeanwhileIsReplaced_data()
    {
        QTest::addColumn<bool>("isSecure");
        QTest::newRow("plain") << false;
        QTest::newRow("TLS") << true;
    }

    void aConnectionThatEndedMeanwhileIsReplaced()
    {
        QFETCH(bool, isSecure);
        const auto run = newRun(isSecure);
        QVERIFY(run->prepare(Call::CreateInstance));
        run->server.closeIdleConnections();

        // When another service has answered, the client has also noticed the end of that connection.
        support::ScriptedServer another;
        another.reply(callPath(Call::Instances), Reply::json(200, "{}"));
        run->view().line(u"Tarnwick URL")->setText(another.origin());
        run->press(u"Refresh");
        QTRY_COMPARE(run->view().status(), u"Loaded 0 Tarnwick project(s)."_s);
        run->view().line(u"Tarnwick URL")->setText(run->server.origin());

        run->press(u"Create GDPS");
        QTRY_COMPARE(run->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run->view().line(u"GDPS Name")->text(), QString());
        QCOMPARE(run->server.count(callPath(Call::CreateInstance)), 1);
    }

private:
    std::unique_ptr<ClientRun> newRun(bool isSecure) const
    {
        return isSecure ? std::make_unique<ClientRun>(tls.identity) : std::make_unique<ClientRun>();
    }

    const support::TrustedTls tls{};
};

TARNWICK_TEST(SinglePassTest)
#include "single_pass_test.moc"
