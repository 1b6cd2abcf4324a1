// What the scripted server records, and to which requests it replies: over HTTP with QNetworkAccessManager.
#include "support/client_test.h"
#include "support/self_test_clients.h"

using support::fetch;
using support::finish;
using support::RawClient;
using support::RecordedRequest;
using support::Reply;
using support::ScriptedServer;

class ScriptedServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsEveryByteAsItCame()
    {
        ScriptedServer server;
        RawClient client(server);
        const QByteArray sent = "POST /a%20b?x=1&y=%41 HTTP/1.1\r\nHost: h\r\nX-One:  padded \r\nx-one: second\r\n"
                                "content-length: 5\r\n\r\n\x00\xff\r\n!"_ba;
        for (qsizetype at = 0; at < sent.size(); ++at) {
            QCOMPARE(server.count(), 0);
            client.send(sent.mid(at, 1));
            QTRY_COMPARE(server.httpBytesReceived(), at + 1);
        }
        QCOMPARE(server.count("/a%20b"), 1);

        const RecordedRequest request = server.requests().constFirst();
        QCOMPARE(request.raw, sent);
        QCOMPARE(request.method, "POST"_ba);
        QCOMPARE(request.target, "/a%20b?x=1&y=%41"_ba);
        QCOMPARE(request.path(), "/a%20b"_ba);
        QCOMPARE(request.query(), "x=1&y=%41"_ba);
        QCOMPARE(request.version, "HTTP/1.1"_ba);
        QCOMPARE(request.headers.size(), 4);
        QCOMPARE(request.headers.at(2), (RecordedRequest::Header{"x-one", "second"}));
        QCOMPARE(request.header("X-ONE"), "padded"_ba);
        QVERIFY(!request.hasHeader("Authorization"));
        QCOMPARE(request.body, QByteArray("\x00\xff\r\n!", 5));
        QCOMPARE(request.connection, 1);
    }

    void holdsUntilReleased()
    {
        ScriptedServer server;
        server.hold("/slow");
        server.reply("/slow", Reply::text(200, "early"));
        server.reply("/quick", Reply::text(200, "quick"));
        QNetworkAccessManager network;
        QNetworkReply* slow = network.get(QNetworkRequest(QUrl(server.origin() + u"/slow"_s)));
        RawClient vanishing(server);
        vanishing.sendGet("/slow");
        QTRY_COMPARE(server.heldCount("/slow"), 2);
        vanishing.vanish();
        QTRY_COMPARE(server.heldCount("/slow"), 1);

        QCOMPARE(fetch(network, server.origin() + u"/quick"_s).body, "quick"_ba);
        QVERIFY(!slow->isFinished());
        server.reply("/slow", Reply::text(200, "late"));
        server.release("/slow");
        QCOMPARE(finish(slow).body, "late"_ba);
        QCOMPARE(fetch(network, server.origin() + u"/slow"_s).body, "late"_ba);
    }

    void keepsConnectionsAlive()
    {
        ScriptedServer server;
        server.reply("/k", Reply::text(200, "kept"));
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "kept"_ba);
        server.reply("/k", Reply::text(200, "last").connectionClose());
        QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "last"_ba);
        QCOMPARE(server.connectionCount(), 1);
        QCOMPARE(server.requests().constLast().connection, 1);
        QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "last"_ba);
        QCOMPARE(server.connectionCount(), 2);
        QCOMPARE(server.requests().constLast().connection, 2);
    }

    void closesIdleConnectionsOnly()
    {
        ScriptedServer server;
        server.hold("/busy");
        RawClient busy(server);
        busy.sendGet("/busy");
        RawClient idle(server);
        QTRY_COMPARE(server.heldCount("/busy"), 1);
        QTRY_COMPARE(server.openConnectionCount(), 2);
        server.closeIdleConnections();
        QTRY_VERIFY(!idle.isConnected());
        QVERIFY(busy.isConnected());
    }
};

TARNWICK_TEST(ScriptedServerTest)
#include "scripted_server_test.moc"
