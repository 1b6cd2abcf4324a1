// Connections that fail in every way in which networks and servers make them fail, for each of the five calls. Built
// with a shorter limit for stalled transfers than the real one, which has a check of its own.
#include "app/tarnwick_client_window.h"
#include "faults/fault_run.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

#include <memory>

using faults::FaultOutcome;
using support::Call;
using support::Reply;

class ConnectionFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCallEndsInOneSentence_data();
    void theCallEndsInOneSentence();
    void noConnectionAtAll_data();
    void noConnectionAtAll();
    void aKeptConnectionMayHaveBeenClosedMeanwhile_data();
    void aKeptConnectionMayHaveBeenClosedMeanwhile();

private:
    static std::unique_ptr<faults::FaultRun> newRun()
    {
        return std::make_unique<faults::FaultRun>([] { return std::make_unique<TarnwickClientWindow>(); });
    }
    static void addRow(Call call, const char* name, const Reply& reply, const FaultOutcome& outcome)
    {
        QTest::addRow("%s: %s", support::callName(call), name) << call << reply << outcome;
    }
    static void addBrokenOff(Call call);
    static void addStalled(Call call);
    static void addBadBodies(Call call);
    static void addHarmless(Call call);
};

namespace {

/// A POST is not sent a second time, and Qt has no words for what keeps it from doing so.
QString connectionFaultUnanswered(Call call)
{
    const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
    return isPost ? u"Unknown error"_s : u"Connection closed"_s;
}

const QString connectionFaultClosed = u"Connection closed"_s;
const QString connectionFaultStalled = u"Operation canceled"_s;
const QByteArray connectionFaultObject = R"({"message":"The service's words","instances":[{},{}]})";

QJsonObject connectionFaultBody()
{
    return {{u"message"_s, u"The service's words"_s}, {u"instances"_s, QJsonArray{QJsonObject(), QJsonObject()}}};
}

Reply connectionFaultPacked(const QByteArray& content)
{
    // The first four bytes are Qt's own.
    return Reply::json(200, qCompress(content, 9).mid(4)).header("Content-Encoding", "deflate");
}

} // namespace

void ConnectionFaultsTest::addBrokenOff(Call call)
{
    const FaultOutcome unanswered{.status = 0, .errorText = connectionFaultUnanswered(call), .body = {}};
    const FaultOutcome closed{.status = 200, .errorText = connectionFaultClosed, .body = {}};
    addRow(call, "closed without an answer", Reply::closeWithoutAnswer(), unanswered);
    addRow(call, "reset without an answer", Reply::resetWithoutAnswer(), unanswered);
    addRow(call, "half a status line", Reply::raw("HTTP/1.1 20"), unanswered);
    addRow(call, "half the headers", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: appl"), unanswered);
    addRow(call, "half a body", Reply::json(200, connectionFaultObject).cutBodyAfter(20), closed);
    addRow(call, "half a body, then a reset", Reply::json(200, connectionFaultObject).cutBodyAfter(20).thenReset(),
           closed);
    addRow(call, "a whole object, but less than announced",
           Reply::json(200, connectionFaultObject).contentLength(900).thenClose(),
           {.status = 200, .errorText = u"The service's words"_s, .body = {}});
    addRow(call, "half a body of an error", Reply::json(503, connectionFaultObject).cutBodyAfter(20),
           {.status = 503, .errorText = u"Tarnwick returned HTTP 503."_s, .body = {}});
    addRow(call, "half a body of a 202", Reply::json(202, connectionFaultObject).cutBodyAfter(20),
           {.status = 202, .errorText = {}, .body = {}});
    addRow(call, "half a body of a 202, then a reset",
           Reply::json(202, connectionFaultObject).cutBodyAfter(20).thenReset(),
           {.status = 202, .errorText = {}, .body = {}});
}

void ConnectionFaultsTest::addStalled(Call call)
{
    const FaultOutcome stalled{.status = 0, .errorText = connectionFaultStalled, .body = {}};
    addRow(call, "silence", Reply::never(), stalled);
    addRow(call, "the head drips", Reply::json(200, connectionFaultObject).dripHead(1, 60), stalled);
    addRow(call, "half a body, then silence", Reply::json(200, connectionFaultObject).cutBodyAfter(20).thenSilence(),
           stalled);
    addRow(call, "half a body of a 202, then silence",
           Reply::json(202, connectionFaultObject).cutBodyAfter(20).thenSilence(),
           {.status = 202, .errorText = {}, .body = {}});
}

void ConnectionFaultsTest::addBadBodies(Call call)
{
    using Fault = Reply::ChunkFault;
    const Reply whole = Reply::json(200, connectionFaultObject);
    const FaultOutcome itsWords{.status = 200, .errorText = u"The service's words"_s, .body = {}};
    const FaultOutcome packing{.status = 200, .errorText = u"Decompression failed: "_s, .body = {}};
    // Qt takes a size that is no number for the end of the body. What has come by then is no object.
    addRow(call, "a chunk without a size", whole.chunked(10, Fault::BadSize),
           {.status = 200, .errorText = {}, .body = {}});
    addRow(call, "a chunk that is too short", whole.chunked(10, Fault::ShortChunk).thenClose(), itsWords);
    addRow(call, "no last chunk", whole.chunked(10, Fault::NoLastChunk).thenClose(), itsWords);
    addRow(call, "packed, but not really", Reply::json(200, "not packed").header("Content-Encoding", "gzip"), packing);
    static const Reply bomb = connectionFaultPacked(QByteArray(80LL * 1024 * 1024, '0'));
    addRow(call, "packed a thousand times", bomb, packing);
}

void ConnectionFaultsTest::addHarmless(Call call)
{
    const Reply whole = Reply::json(200, connectionFaultObject);
    const FaultOutcome good{.status = 200, .errorText = {}, .body = connectionFaultBody()};
    addRow(call, "the body drips", whole.dripBody(1, 5), good);
    addRow(call, "no length", whole.withoutContentLength(), good);
    addRow(call, "chunks", whole.chunked(7), good);
    addRow(call, "packed", connectionFaultPacked(connectionFaultObject), good);
    addRow(call, "closes although it should stay", whole.thenClose(), good);
}

void ConnectionFaultsTest::theCallEndsInOneSentence_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<FaultOutcome>("outcome");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        addBrokenOff(call);
        addStalled(call);
        addBadBodies(call);
        addHarmless(call);
    }
}

void ConnectionFaultsTest::theCallEndsInOneSentence()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(FaultOutcome, outcome);
    const auto run = newRun();
    QVERIFY(run->play(call, reply));
    QVERIFY(run->wasBusy());
    QCOMPARE(run->seen(), run->expected(outcome));
    QCOMPARE(run->arrivals(), run->expectedArrivals(outcome));
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

void ConnectionFaultsTest::noConnectionAtAll_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("origin");
    QTest::addColumn<QString>("errorText");
    support::ScriptedServer gone;
    gone.stop();
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::addRow("%s: refused", support::callName(call)) << call << gone.origin() << u"Connection refused"_s;
        QTest::addRow("%s: unknown host", support::callName(call))
            << call << u"http://nowhere.invalid"_s << u"Host nowhere.invalid not found"_s;
    }
}

void ConnectionFaultsTest::noConnectionAtAll()
{
    QFETCH(Call, call);
    QFETCH(QString, origin);
    QFETCH(QString, errorText);
    const auto run = newRun();
    QVERIFY(run->playAt(call, origin));
    QVERIFY(run->wasBusy());
    QCOMPARE(run->seen(), run->expected({.status = 0, .errorText = errorText, .body = {}}));
    QCOMPARE(run->arrivals(), QList<QByteArray>());
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

void ConnectionFaultsTest::aKeptConnectionMayHaveBeenClosedMeanwhile_data()
{
    QTest::addColumn<Call>("call");
    QTest::newRow("link start") << Call::LinkStart;
    QTest::newRow("instances") << Call::Instances;
    QTest::newRow("create") << Call::CreateInstance;
}

void ConnectionFaultsTest::aKeptConnectionMayHaveBeenClosedMeanwhile()
{
    QFETCH(Call, call);
    const auto run = newRun();
    QVERIFY(run->play(call, Reply::json(500, "{}").keepAliveThenCloseIdle(1)));
    QTRY_COMPARE(run->server.openConnectionCount(), 0);
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

QTEST_MAIN(ConnectionFaultsTest)
#include "connection_faults_test.moc"
