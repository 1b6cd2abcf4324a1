// A transfer that stands still comes to an end by itself. Built with a shorter limit than the real one, which has a
// check of its own.
#include "app/tarnwick_client_window.h"

#include "api/request_limits.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QNetworkReply>
#include <QTest>
#include <QTimer>

#include <memory>

using support::Call;
using support::Reply;

class StalledTransferTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aStallIsATransferError_data();
    void aStallIsATransferError();
    void aStallAfterAnErrorStatusIsThatError();
    void aStallAfterAPendingStatusKeepsWaiting();
    void aStalledTlsHandshakeIsATransferError();
    void everyKindGetsItsControlsBack_data();
    void everyKindGetsItsControlsBack();
    void aStalledSessionCheckSignsOut();
    void aStalledPollStopsPollingAndKeepsTheCode();
    void aStalledCreationKeepsTheForm();
    void aMovingTransferMayTakeLonger();
    void aMovingTransferThatIsKeptBackMayNot_data();
    void aMovingTransferThatIsKeptBackMayNot();

private:
    bool isPolling() const { return bench->window().findChild<QTimer*>({}, Qt::FindDirectChildrenOnly)->isActive(); }

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

const QString stalledText = u"Operation canceled"_s;

Reply stalledInTheBody(int status)
{
    return Reply::json(status, R"({"message":"never read"})").cutBodyAfter(12).thenSilence();
}

} // namespace

void StalledTransferTest::initTestCase()
{
    QVERIFY2(requestTimeoutMs < 5000, "The limit is the real one; each of these tests would wait for it.");
}

void StalledTransferTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<support::ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void StalledTransferTest::cleanup()
{
    bench.reset();
    server.reset();
    // A reply that was given up is closed; reading it all the same would print a warning.
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StalledTransferTest::aStallIsATransferError_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        QTest::addRow("%s, no answer", name) << call << Reply::never();
        QTest::addRow("%s, half a status line", name) << call << Reply::raw("HTTP/1.1 2").thenSilence();
        QTest::addRow("%s, half the headers", name)
            << call << Reply::raw("HTTP/1.1 200 OK\r\nContent-Ty").thenSilence();
        QTest::addRow("%s, half a body", name) << call << stalledInTheBody(200);
        // The message has come whole, but a reply that was given up is not read.
        QTest::addRow("%s, a whole object and no end", name)
            << call << Reply::json(200, R"({"message":"never read"})").contentLength(100).thenSilence();
    }
}

void StalledTransferTest::aStallIsATransferError()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), reply);
    server->forgetRequests();
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), stalledText);
    QCOMPARE(server->count(callPath(call)), 1);
    QTRY_COMPARE(bench->window().findChildren<QNetworkReply*>().size(), 0);
}

void StalledTransferTest::aStallAfterAnErrorStatusIsThatError()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->reply(callPath(Call::Instances), stalledInTheBody(503));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"Tarnwick returned HTTP 503."_s);
}

void StalledTransferTest::aStallAfterAPendingStatusKeepsWaiting()
{
    QVERIFY(bench->prepare(Call::LinkPoll));
    server->reply(callPath(Call::LinkPoll), stalledInTheBody(202));
    bench->bringAbout(Call::LinkPoll);
    QTRY_COMPARE(bench->view().status(),
                 u"Waiting for approval at "_s + QStringLiteral(TARNWICK_PUBLIC_HOST) + u"/link/pc."_s);
    QVERIFY(isPolling());
}

void StalledTransferTest::aStalledTlsHandshakeIsATransferError()
{
    support::ScriptedServer silent(support::HandshakeFault::Silence);
    bench->startUnlinked();
    bench->view().line(u"Tarnwick URL")->setText(silent.origin());
    bench->bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench->view().status(), stalledText);
    QCOMPARE(silent.connectionCount(), 1);
    QCOMPARE(silent.httpBytesReceived(), 0);
    QVERIFY(bench->view().button(u"Generate Link Code")->isEnabled());
}

void StalledTransferTest::everyKindGetsItsControlsBack_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("button");
    QTest::newRow("link start") << Call::LinkStart << u"Generate Link Code"_s;
    QTest::newRow("instances") << Call::Instances << u"Refresh"_s;
    QTest::newRow("create") << Call::CreateInstance << u"Create GDPS"_s;
}

void StalledTransferTest::everyKindGetsItsControlsBack()
{
    QFETCH(Call, call);
    QFETCH(QString, button);
    QVERIFY(bench->prepare(call));
    server->replies(callPath(call), {Reply::never(), Reply::json(500, R"({"message":"Second answer"})")});
    server->forgetRequests();
    bench->bringAbout(call);
    QVERIFY(!bench->view().button(button)->isEnabled());
    QTRY_VERIFY(bench->view().button(button)->isEnabled());
    QCOMPARE(bench->view().status(), stalledText);

    // The kind is free again: the next press sends.
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), u"Second answer"_s);
    QCOMPARE(server->count(callPath(call)), 2);
}

void StalledTransferTest::aStalledSessionCheckSignsOut()
{
    server->reply(callPath(Call::Session), Reply::never());
    bench->startLinked();
    QTRY_COMPARE(bench->view().status(), stalledText);
    QVERIFY(!bench->view().button(u"Unlink")->isEnabled());
    QVERIFY(!bench->view().button(u"Refresh")->isEnabled());
    QVERIFY(!bench->home().stateObject().contains(u"access_token"_s));
}

void StalledTransferTest::aStalledPollStopsPollingAndKeepsTheCode()
{
    QVERIFY(bench->prepare(Call::LinkPoll));
    server->reply(callPath(Call::LinkPoll), Reply::never());
    bench->bringAbout(Call::LinkPoll);
    QVERIFY(isPolling());
    QTRY_COMPARE(bench->view().status(), stalledText);
    QVERIFY(!isPolling());
    QCOMPARE(bench->view().line(u"Link code")->text(), u"TWPC-TEST01"_s);

    // The kind is free again: a new code is polled for.
    server->reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"Polled again"})"));
    bench->bringAbout(Call::LinkStart);
    QTRY_VERIFY(isPolling());
    bench->tickPollTimer();
    QTRY_COMPARE(bench->view().status(), u"Polled again"_s);
}

void StalledTransferTest::aStalledCreationKeepsTheForm()
{
    QVERIFY(bench->prepare(Call::CreateInstance));
    server->reply(callPath(Call::CreateInstance), Reply::never());
    bench->view().description()->setPlainText(u"kept"_s);
    bench->bringAbout(Call::CreateInstance);
    QTRY_COMPARE(bench->view().status(), stalledText);
    QCOMPARE(bench->view().line(u"GDPS Name")->text(), u"Neon Burst"_s);
    QCOMPARE(bench->view().description()->toPlainText(), u"kept"_s);
    QVERIFY(bench->view().line(u"GDPS Name")->isEnabled());
}

void StalledTransferTest::aMovingTransferMayTakeLonger()
{
    QVERIFY(bench->prepare(Call::Instances));
    // Forty steps make three times the limit, and no pause in it comes near the limit.
    server->reply(callPath(Call::Instances),
                  Reply::json(200, R"({"instances":[{},{}])" + QByteArray(20, ' ') + '}').dripBody(1, 45));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s, 20000);
}

void StalledTransferTest::aMovingTransferThatIsKeptBackMayNot_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("401, demands a password") << 401;
    QTest::newRow("407, demands a password") << 407;
    QTest::newRow("302, leads elsewhere") << 302;
}

void StalledTransferTest::aMovingTransferThatIsKeptBackMayNot()
{
    QFETCH(int, status);
    QVERIFY(bench->prepare(Call::Instances));
    // Of such a body Qt tells nothing before it has all of it. Nobody sees how large it becomes, and only the limit
    // ends it; the body's own sentence, or the redirect's target, would come after seven times the limit.
    const QByteArray body = R"({"message":"never read"})" + QByteArray(80, ' ');
    server->reply(callPath(Call::Instances), Reply::json(status, body).header("Location", "/moved").dripBody(1, 45));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), stalledText, 20000);
    QTRY_COMPARE(server->openConnectionCount(), 0);
    QCOMPARE(server->count("/moved"), 0);
}

QTEST_MAIN(StalledTransferTest)
#include "stalled_transfer_test.moc"
