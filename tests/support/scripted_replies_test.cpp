// Every way in which a scripted reply can succeed or fail, tested with QNetworkAccessManager and with raw bytes.
#include "support/client_test.h"
#include "support/self_test_clients.h"
#include "support/system_memory.h"

#include <array>

#if defined(Q_OS_UNIX)
#include <arpa/inet.h>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#endif

using support::fetch;
using support::Fetched;
using support::RawClient;
using support::Reply;
using support::ScriptedServer;

class ScriptedRepliesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheBytesAsBuilt_data()
    {
        using Fault = Reply::ChunkFault;
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QByteArray>("expected");
        const auto broken = [](Fault fault) {
            return Reply::text(200, "abcdef").chunked(4, fault);
        };
        const QByteArray chunkedHead = "HTTP/1.1 200 Scripted\r\nContent-Type: text/plain\r\n"
                                       "Transfer-Encoding: chunked\r\n\r\n";
        QTest::newRow("JSON")
            << Reply::json(200, "{}")
            << "HTTP/1.1 200 Scripted\r\nContent-Type: application/json\r\nContent-Length: 2\r\n\r\n{}"_ba;
        QTest::newRow("empty") << Reply::empty(404) << "HTTP/1.1 404 Scripted\r\nContent-Length: 0\r\n\r\n"_ba;
        QTest::newRow("no body allowed") << Reply::empty(204) << "HTTP/1.1 204 Scripted\r\n\r\n"_ba;
        QTest::newRow("without a length")
            << Reply::empty(200).withoutContentLength() << "HTTP/1.1 200 Scripted\r\n\r\n"_ba;
        QTest::newRow("another length") << Reply::empty(200).contentLength(9)
                                        << "HTTP/1.1 200 Scripted\r\nContent-Length: 9\r\n\r\n"_ba;
        QTest::newRow("raw") << Reply::raw("any\nthing") << "any\nthing"_ba;
        QTest::newRow("a repeated pattern")
            << Reply::huge(200, 7, "abc") << "HTTP/1.1 200 Scripted\r\nContent-Length: 7\r\n\r\nabcabca"_ba;
        QTest::newRow("a repeated pattern in one chunk")
            << Reply::huge(200, 7, "abc").chunked()
            << "HTTP/1.1 200 Scripted\r\nTransfer-Encoding: chunked\r\n\r\n7\r\nabcabca\r\n0\r\n\r\n"_ba;
        QTest::newRow("chunks") << broken(Fault::None) << chunkedHead + "4\r\nabcd\r\n2\r\nef\r\n0\r\n\r\n";
        QTest::newRow("bad size") << broken(Fault::BadSize) << chunkedHead + "4\r\nabcd\r\nno-size\r\nef\r\n0\r\n\r\n";
        QTest::newRow("short chunk") << broken(Fault::ShortChunk) << chunkedHead + "4\r\nabcd\r\n66\r\nef";
        QTest::newRow("no separator") << broken(Fault::NoSeparator) << chunkedHead + "4\r\nabcd2\r\nef0\r\n\r\n";
        QTest::newRow("no last chunk") << broken(Fault::NoLastChunk) << chunkedHead + "4\r\nabcd\r\n2\r\nef\r\n";
    }

    void writesTheBytesAsBuilt()
    {
        QFETCH(Reply, reply);
        QFETCH(QByteArray, expected);
        ScriptedServer server;
        server.reply("/", reply.thenClose());
        RawClient client(server);
        client.sendGet("/");
        QTRY_VERIFY(!client.isConnected());
        QCOMPARE(client.received(), expected);
    }

    void drips_data()
    {
        QTest::addColumn<Reply>("reply");
        const QByteArray body(90, 'x');
        QTest::newRow("the whole answer") << Reply::text(200, body).drip(3, 1);
        QTest::newRow("the body") << Reply::text(200, body).dripBody(2, 1);
    }

    void drips()
    {
        QFETCH(Reply, reply);
        ScriptedServer server;
        server.reply("/", reply);
        RawClient client(server);
        client.sendGet("/");
        QTRY_COMPARE(client.received(), reply.bytes());
        QVERIFY2(client.receivedPieces() > 15, "the answer came in too few pieces");
        QVERIFY(client.isConnected());
    }

    void cutsAnAnswer_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        const Reply whole = Reply::text(200, "0123456789");
        QTest::newRow("no answer") << Reply::closeWithoutAnswer() << 0 << QByteArray();
        QTest::newRow("reset, no answer") << Reply::resetWithoutAnswer() << 0 << QByteArray();
        QTest::newRow("in the body") << whole.cutBodyAfter(4) << 200 << "0123"_ba;
        QTest::newRow("in the body, reset") << whole.cutBodyAfter(4).thenReset() << 200 << "0123"_ba;
        QTest::newRow("less than announced") << whole.contentLength(100).thenClose() << 200 << "0123456789"_ba;
    }

    void cutsAnAnswer()
    {
        QFETCH(Reply, reply);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        ScriptedServer server;
        server.reply("/", reply);
        QNetworkAccessManager network;
        const Fetched fetched = fetch(network, server.origin() + u"/"_s);
        QCOMPARE(fetched.error, QNetworkReply::RemoteHostClosedError);
        QCOMPARE(fetched.status, status);
        QCOMPARE(fetched.body, body);
    }

    /// Qt's sockets report a reset like a close; the system distinguishes them.
    void resetsForReal()
    {
#if defined(Q_OS_UNIX)
        ScriptedServer server;
        server.reply("/reset", Reply::raw("gone").thenReset());
        server.reply("/close", Reply::raw("gone"));
        QCOMPARE(endOfConnection(server, "GET /reset HTTP/1.1\r\n\r\n"), ECONNRESET);
        QCOMPARE(endOfConnection(server, "GET /close HTTP/1.1\r\n\r\n"), 0);
#else
        QSKIP("needs the system's own sockets");
#endif
    }

    void leavesTheClientToItsTimeout_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::newRow("silence") << Reply::never();
        QTest::newRow("silence in the body") << Reply::text(200, "0123456789").cutBodyAfter(3).thenSilence();
    }

    void leavesTheClientToItsTimeout()
    {
        QFETCH(Reply, reply);
        ScriptedServer server;
        server.reply("/", reply);
        {
            QNetworkAccessManager network;
            QCOMPARE(fetch(network, server.origin() + u"/"_s, 200).error, QNetworkReply::OperationCanceledError);
        }
        QTRY_COMPARE(server.openConnectionCount(), 0);
        QCOMPARE(server.count(), 1);
    }

    void closesAKeptConnectionWhenIdle()
    {
        ScriptedServer server;
        server.reply("/", Reply::text(200, "kept").keepAliveThenCloseIdle(50));
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "kept"_ba);
        QCOMPARE(server.openConnectionCount(), 1);
        QTRY_COMPARE(server.openConnectionCount(), 0);
    }

    void holdsTheBodyUntilItIsReleased()
    {
        ScriptedServer server;
        const Reply reply = Reply::text(200, "0123456789");
        server.reply("/", reply.holdBody());
        server.reply("/empty", Reply::empty(404).holdBody());
        RawClient vanishing(server);
        vanishing.sendGet("/");
        RawClient client(server);
        client.sendGet("/");
        QTRY_COMPARE(server.heldBodyCount(), 2);
        vanishing.vanish();
        QTRY_COMPARE(server.heldBodyCount(), 1);
        // A reply without a body is not held, and other clients get their replies meanwhile.
        RawClient other(server);
        other.sendGet("/empty");
        QTRY_COMPARE(other.received(), Reply::empty(404).bytes());
        QVERIFY(client.received().endsWith("\r\n\r\n"));
        server.releaseBodies();
        QTRY_COMPARE(client.received(), reply.bytes());
    }

    void holdsAHugeBodyBackWhileNobodyReads()
    {
        ScriptedServer server;
        server.reply("/", Reply::huge(200, 1024LL * 1024 * 1024 * 1024));
        server.reply("/other", Reply::text(200, "alive"));
        const qint64 peakBefore = support::peakMemoryBytes();
        QNetworkAccessManager network;
        QNetworkReply* reply = network.get(QNetworkRequest(QUrl(server.origin() + u"/"_s)));
        reply->setReadBufferSize(4096);
        QTRY_VERIFY(reply->bytesAvailable() >= 4096);
        QCOMPARE(fetch(network, server.origin() + u"/other"_s).body, "alive"_ba);
        QVERIFY(support::peakMemoryBytes() - peakBefore < 64LL * 1024 * 1024);
        reply->abort();
        reply->deleteLater();
        QTRY_COMPARE(server.openConnectionCount(), 1); // the other request's, which is kept alive
    }

private:
#if defined(Q_OS_UNIX)
    /// Sends the request and reads until the end. Returns the error that the system reports for it, or 0.
    static int endOfConnection(const ScriptedServer& server, const QByteArray& request)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(server.port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        // The listener's backlog completes the connection, so this does not wait for the server's event loop.
        int error = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        error += ::send(socket, request.constData(), static_cast<size_t>(request.size()), 0) < 0 ? 1 : 0;
        const bool hasEnded = error == 0 && support::waitFor([socket, &error] {
                                  std::array<char, 64> buffer{};
                                  const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
                                  error = count < 0 ? errno : 0;
                                  return count == 0 || error == ECONNRESET;
                              });
        ::close(socket);
        return hasEnded ? error : -1;
    }
#endif
};

TARNWICK_TEST(ScriptedRepliesTest)
#include "scripted_replies_test.moc"
