// Connections that fail as networks and servers fail.
#include "faults/fault_run.h"
#include "support/client_test.h"

#include <memory>

using faults::FaultRun;
using faults::Outcome;
using support::Call;
using support::callPath;
using support::Reply;

namespace {

const QString connectionClosed = u"Connection closed"_s;
const QString connectionWords = u"The service's words"_s;

struct ConnectionRow
{
    const char* name;
    Reply reply;
    Outcome outcome;
};

Reply connectionReply(int status, const char* body = "{'message':'The service\\u0027s words','instances':[{},{}]}")
{
    return Reply::json(status, support::json(body));
}

Reply connectionCutReply(int status)
{
    return connectionReply(status).cutBodyAfter(20);
}

Reply connectionLongerReply(int status, const char* body)
{
    return connectionReply(status, body).contentLength(900).thenClose();
}

Reply connectionPacked(const QByteArray& stream)
{
    return Reply::json(200, stream).header("Content-Encoding", "deflate");
}

QByteArray connectionDeflate(const QByteArray& content)
{
    return qCompress(content, 9).sliced(4); // without the length that qCompress() adds
}

QByteArray connectionWithWrongChecksum(QByteArray stream)
{
    stream.back() = static_cast<char>(~stream.back());
    return stream;
}

/// A POST is not sent a second time; Qt has no error text for that.
Outcome connectionUnanswered(Call call)
{
    const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
    return Outcome::failed(0, isPost ? u"Unknown error"_s : connectionClosed);
}

/// Tested with every call.
QList<ConnectionRow> connectionCommonRows(Call call)
{
    return {
        {"closed without an answer", Reply::closeWithoutAnswer(), connectionUnanswered(call)},
        {"half a body", connectionCutReply(200), Outcome::failed(200, connectionClosed)},
        {"half a body of a 202", connectionCutReply(202), Outcome::success(202)},
        {"a body without a text, but less than announced",
         connectionLongerReply(200, "{'message':'','code':'X','access_token':'t','user':{},'instances':[]}"),
         Outcome::failed(200, connectionClosed)},
    };
}

/// The connection ends too early, or what arrives is no HTTP reply.
QList<ConnectionRow> connectionBrokenRows(Call call)
{
    const Outcome unanswered = connectionUnanswered(call);
    const Outcome cut = Outcome::failed(200, connectionClosed);
    const char* text = "{'message':'','error':'The service\\u0027s words'}";
    return {
        {"reset without an answer", Reply::resetWithoutAnswer(), unanswered},
        {"half a status line", Reply::raw("HTTP/1.1 20"), unanswered},
        {"half the headers", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: appl"), unanswered},
        {"garbage", Reply::raw("\x16\x03\x01 this is no answer\r\n\r\n"), unanswered},
        {"a greeting of another protocol", Reply::raw("220 mail.example ESMTP\r\n"), unanswered},
        {"a status without a number", Reply::raw("HTTP/1.1 good\r\n\r\n"), unanswered},
        {"headers that do not end", Reply::raw("HTTP/1.1 200 OK\r\n" + QByteArray("X: y\r\n").repeated(50000)),
         unanswered},
        {"half a body, then a reset", connectionCutReply(200).thenReset(), cut},
        {"half a body of an error", connectionCutReply(503), Outcome::failed(503, u"Tarnwick returned HTTP 503."_s)},
        {"a text, but less than announced", connectionLongerReply(200, text), Outcome::failed(200, connectionWords)},
        {"an error's text, but less than announced", connectionLongerReply(500, text),
         Outcome::failed(500, connectionWords)},
    };
}

/// The body has an encoding that cannot be read.
QList<ConnectionRow> connectionBodyRows()
{
    using Fault = Reply::ChunkFault;
    const Outcome cut = Outcome::failed(200, connectionClosed);
    const Outcome words = Outcome::failed(200, connectionWords);
    const Outcome packing = Outcome::failed(200, u"Decompression failed: "_s);
    const QByteArray packed = connectionDeflate(R"({"message":"packed","instances":[{},{}]})");
    return {
        // Qt takes an invalid size for the end of the body. What has arrived by then is no JSON object.
        {"a chunk without a size", connectionReply(200).chunked(10, Fault::BadSize), Outcome::success(200)},
        {"a chunk that is too short", connectionReply(200).chunked(10, Fault::ShortChunk).thenClose(), words},
        {"a cut chunk, then a reset", connectionReply(200).chunked(10).cutBodyAfter(8).thenReset(), cut},
        {"a cut size of a chunk", connectionReply(200).chunked(10).cutBodyAfter(1), cut},
        {"chunks without separators", connectionReply(200).chunked(10, Fault::NoSeparator), Outcome::success(200)},
        {"no last chunk", connectionReply(200).chunked(10, Fault::NoLastChunk).thenClose(), words},
        {"packed, but not really", connectionPacked("not packed"), packing},
        // Qt does not notice that the end is missing. What it decompresses is no JSON object.
        {"packed and cut", connectionPacked(packed.chopped(20)), Outcome::success(200)},
        {"packed, with a wrong checksum", connectionPacked(connectionWithWrongChecksum(packed)), packing},
    };
}

Outcome connectionTwoProjects()
{
    return Outcome::success(
        200, {{u"projects"_s, u"[ |  |  | ][ |  |  | ]"_s}, {u"status"_s, u"Loaded 2 Tarnwick project(s)."_s}});
}

/// Unusual, but complete.
QList<ConnectionRow> connectionHarmlessRows()
{
    const Outcome good = connectionTwoProjects();
    const Reply whole = connectionReply(200);
    const QByteArray bytes = support::json("{'message':'The service\\u0027s words','instances':[{},{}]}");
    return {
        {"the body drips", whole.dripBody(1, 1), good},
        {"no length", whole.withoutContentLength(), good},
        {"chunks", whole.chunked(7), good},
        {"packed", connectionPacked(connectionDeflate(bytes)), good},
        {"closes although it should stay", whole.thenClose(), good},
        {"a header of 60,000 bytes", whole.header("X-Long", QByteArray(60000, 'x')), good},
        {"told to continue", Reply::raw("HTTP/1.1 100 Continue\r\n\r\n" + whole.bytes()).keepOpen(), good},
        // The client did not ask for another protocol, but the status is no error.
        {"another protocol", Reply::empty(101).header("Upgrade", "another").thenClose(), Outcome::success(101)},
    };
}

void addConnectionRows(bool isSecure, Call call, const QList<ConnectionRow>& rows)
{
    for (const ConnectionRow& row : rows) {
        QTest::addRow("%s%s: %s", support::callName(call), isSecure ? ", TLS" : "", row.name)
            // The body is sent after the client has read the head. If a reply ends with its connection, Qt only accepts
            // it if it was already reading, and when it starts to read depends on the machine.
            << isSecure << call << row.reply.holdBody() << row.outcome;
    }
}

} // namespace

class ConnectionFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCallEndsInOneSentence_data()
    {
        QTest::addColumn<bool>("isSecure");
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<Outcome>("outcome");
        for (const Call call : support::allCalls()) {
            addConnectionRows(false, call, connectionCommonRows(call));
        }
        for (const Call call : {Call::Instances, Call::CreateInstance}) {
            addConnectionRows(true, call, connectionCommonRows(call));
            addConnectionRows(false, call, connectionBrokenRows(call));
        }
        addConnectionRows(false, Call::Instances, connectionBodyRows());
        addConnectionRows(false, Call::Instances, connectionHarmlessRows());
    }

    void theCallEndsInOneSentence()
    {
        QFETCH(bool, isSecure);
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        QFETCH(Outcome, outcome);
        const auto run = newRun(isSecure);
        QVERIFY(run->play(call, reply));
        run->checkEnd(outcome);
    }

    void aNulByteInAHeaderDoesNoHarm()
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
        QTest::ignoreMessage(QtWarningMsg, "HTTP header value contained illegal character(s)");
#endif
        FaultRun run;
        QVERIFY(run.play(Call::Instances, connectionReply(200).header("X-Odd", QByteArray("a\0b", 3))));
        run.checkEnd(connectionTwoProjects());
    }

    void noConnectionAtAll_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("origin");
        QTest::addColumn<QString>("failure");
        support::ScriptedServer gone;
        gone.stop();
        for (const Call call : support::allCalls()) {
            QTest::addRow("%s: refused", support::callName(call)) << call << gone.origin() << u"Connection refused"_s;
            QTest::addRow("%s: unknown host", support::callName(call))
                << call << u"http://nowhere.invalid"_s << u"Host nowhere.invalid not found"_s;
        }
    }

    void noConnectionAtAll()
    {
        QFETCH(Call, call);
        QFETCH(QString, origin);
        QFETCH(QString, failure);
        FaultRun run;
        QVERIFY(run.playAt(call, origin));
        run.checkEnd(Outcome::failed(0, failure));
    }

    void aKeptConnectionMayHaveBeenClosedMeanwhile_data()
    {
        QTest::addColumn<bool>("isSecure");
        QTest::addColumn<Call>("call");
        for (const Call call : {Call::LinkStart, Call::Instances, Call::CreateInstance}) {
            QTest::addRow("%s", support::callName(call)) << false << call;
            QTest::addRow("%s, TLS", support::callName(call)) << true << call;
        }
    }

    void aKeptConnectionMayHaveBeenClosedMeanwhile()
    {
        QFETCH(bool, isSecure);
        QFETCH(Call, call);
        const auto run = newRun(isSecure);
        QVERIFY(run->play(call, Reply::json(500, "{}").keepAliveThenCloseIdle(1)));
        run->check(Outcome::failed(500, u"Tarnwick returned HTTP 500."_s));
        QTRY_COMPARE(run->server.openConnectionCount(), 0);
        QVERIFY(run->asksAnother()); // by now the client has noticed, too

        const int connections = run->server.connectionCount();
        QVERIFY(run->playAgain(Reply::json(200, "{}")));
        QVERIFY(run->server.connectionCount() > connections);
        run->checkEnd(Outcome::success(200));
    }

private:
    std::unique_ptr<FaultRun> newRun(bool isSecure) const
    {
        return isSecure ? std::make_unique<FaultRun>(tls.identity) : std::make_unique<FaultRun>();
    }

    const support::TrustedTls tls{};
};

TARNWICK_TEST(ConnectionFaultsTest)
#include "connection_faults_test.moc"
