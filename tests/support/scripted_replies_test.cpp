// Every way in which a scripted reply can go right or wrong, as a network stack and the raw bytes show it.
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/self_test_clients.h"
#include "support/system_socket.h"

#include <QElapsedTimer>
#include <QTest>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;
using support::fetch;
using support::Fetched;
using support::post;
using support::RawClient;
using support::Reply;
using support::ScriptedServer;

class ScriptedRepliesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheHeadAsBuilt_data();
    void writesTheHeadAsBuilt();
    void sendsRawBytesAndGoesOnWhenKeptOpen();
    void delaysTheFirstByte();
    void dripsTheWholeAnswer();
    void dripsThePartAskedFor_data();
    void dripsThePartAskedFor();
    void cutsAnAnswer_data();
    void cutsAnAnswer();
    void resetsForReal();
    void leavesTheClientToItsTimeout_data();
    void leavesTheClientToItsTimeout();
    void announcesALengthThatIsNotSo();
    void endsABodyWithoutLengthByClosing();
    void chunksABody();
    void breaksChunks_data();
    void breaksChunks();
    void closesAKeptConnectionWhenIdle();
    void setsCookies();
    void redirects();
    void interimRepliesComeFirst();
};

void ScriptedRepliesTest::writesTheHeadAsBuilt_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("JSON") << Reply::json(200, "{}").bytes()
                          << "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n\r\n{}"_ba;
    QTest::newRow("JSON object") << Reply::json(200, QJsonObject{{u"a"_s, 1}}).header("Content-Type", "x").bytes()
                                 << "HTTP/1.1 200 OK\r\nContent-Type: x\r\nContent-Length: 7\r\n\r\n{\"a\":1}"_ba;
    QTest::newRow("empty") << Reply::empty(404).bytes() << "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n"_ba;
    QTest::newRow("no body allowed") << Reply::empty(204).bytes() << "HTTP/1.1 204 No Content\r\n\r\n"_ba;
    QTest::newRow("unknown status, reason")
        << Reply::empty(599).reason("Odd").bytes() << "HTTP/1.1 599 Odd\r\nContent-Length: 0\r\n\r\n"_ba;
    QTest::newRow("repeated header") << Reply::empty(204).setCookie("a=1").setCookie("b=2").bytes()
                                     << "HTTP/1.1 204 No Content\r\nSet-Cookie: a=1\r\nSet-Cookie: b=2\r\n\r\n"_ba;
    QTest::newRow("chunked") << Reply::empty(200).chunked().bytes()
                             << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"_ba;
    QTest::newRow("raw") << Reply::raw("any\nthing").bytes() << "any\nthing"_ba;
}

void ScriptedRepliesTest::writesTheHeadAsBuilt()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, expected);
    QCOMPARE(bytes, expected);
}

void ScriptedRepliesTest::sendsRawBytesAndGoesOnWhenKeptOpen()
{
    ScriptedServer server;
    server.replies("/", {Reply::raw("\x01garbage\n").keepOpen(), Reply::raw("end")});
    RawClient client(server);
    client.sendGet("/");
    QTRY_COMPARE(client.received(), "\x01garbage\n"_ba);
    client.sendGet("/");
    QTRY_COMPARE(client.received(), "\x01garbage\nend"_ba);
    QTRY_VERIFY(!client.isConnected());
    QCOMPARE(server.connectionCount(), 1);
}

void ScriptedRepliesTest::delaysTheFirstByte()
{
    ScriptedServer server;
    server.reply("/", Reply::text(200, "late").delay(200));
    QNetworkAccessManager network;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "late"_ba);
    QVERIFY(clock.elapsed() >= 200);
}

void ScriptedRepliesTest::dripsTheWholeAnswer()
{
    ScriptedServer server;
    const Reply reply = Reply::text(200, "drop by drop");
    server.reply("/", reply.drip(5, 2));
    RawClient client(server);
    client.sendGet("/");
    QTRY_COMPARE(client.received(), reply.bytes());
    QVERIFY2(client.receivedPieces() > reply.bytes().size() / 10, "the answer came in too few pieces");
    QVERIFY(client.isConnected());
}

void ScriptedRepliesTest::dripsThePartAskedFor_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("head") << Reply::text(200, QByteArray(1000, 'x')).dripHead(1, 1);
    QTest::newRow("body") << Reply::text(200, QByteArray(90, 'x')).dripBody(1, 1);
    QTest::newRow("chunked body") << Reply::text(200, QByteArray(90, 'x')).chunked(10).dripBody(1, 1);
}

void ScriptedRepliesTest::dripsThePartAskedFor()
{
    QFETCH(Reply, reply);
    ScriptedServer server;
    server.reply("/", reply);
    RawClient client(server);
    client.sendGet("/");
    QTRY_COMPARE(client.received(), reply.bytes());
    QVERIFY(client.receivedPieces() > 20);
    QVERIFY(client.receivedPieces() < 200);
}

void ScriptedRepliesTest::cutsAnAnswer_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    const Reply whole = Reply::text(200, "0123456789");
    QTest::newRow("no answer") << Reply::closeWithoutAnswer() << 0 << QByteArray();
    QTest::newRow("reset, no answer") << Reply::resetWithoutAnswer() << 0 << QByteArray();
    QTest::newRow("in the status line") << whole.cutAfter(8) << 0 << QByteArray();
    QTest::newRow("in the headers") << whole.cutAfter(30) << 0 << QByteArray();
    QTest::newRow("in the body") << whole.cutBodyAfter(4) << 200 << "0123"_ba;
    QTest::newRow("in the body, reset") << whole.cutBodyAfter(4).thenReset() << 200 << "0123"_ba;
}

void ScriptedRepliesTest::cutsAnAnswer()
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
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void ScriptedRepliesTest::resetsForReal()
{
    if (!support::SystemSocket::isSupported()) {
        QSKIP("needs the system's own sockets: Qt reports a reset and a close alike");
    }
    ScriptedServer server;
    server.reply("/reset", Reply::text(200, "gone").cutAfter(8).thenReset());
    server.reply("/close", Reply::text(200, "gone").cutAfter(8));
    support::SystemSocket resetClient(server.port());
    resetClient.send("GET /reset HTTP/1.1\r\n\r\n");
    QTRY_VERIFY(resetClient.readMore() == support::SystemSocket::State::Reset);
    support::SystemSocket closeClient(server.port());
    closeClient.send("GET /close HTTP/1.1\r\n\r\n");
    QTRY_VERIFY(closeClient.readMore() == support::SystemSocket::State::Closed);
    QCOMPARE(closeClient.received(), "HTTP/1.1"_ba);
}

void ScriptedRepliesTest::leavesTheClientToItsTimeout_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("silence") << Reply::never();
    QTest::newRow("silence in the head") << Reply::text(200, "x").cutAfter(20).thenSilence();
    QTest::newRow("silence in the body") << Reply::text(200, "0123456789").cutBodyAfter(3).thenSilence();
    QTest::newRow("a head that takes too long") << Reply::text(200, "x").dripHead(1, 60);
}

void ScriptedRepliesTest::leavesTheClientToItsTimeout()
{
    QFETCH(Reply, reply);
    const support::MessageCatcher catcher;
    ScriptedServer server;
    server.reply("/", reply);
    {
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/"_s, 200).error, QNetworkReply::OperationCanceledError);
    }
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(server.count(), 1);
    QCOMPARE(catcher.messages(), QStringList());
}

void ScriptedRepliesTest::announcesALengthThatIsNotSo()
{
    ScriptedServer server;
    server.reply("/more", Reply::text(200, "0123456789").contentLength(100).thenClose());
    server.reply("/less", Reply::text(200, "0123456789").contentLength(4).thenClose());
    QNetworkAccessManager network;
    const Fetched more = fetch(network, server.origin() + u"/more"_s);
    QCOMPARE(more.error, QNetworkReply::RemoteHostClosedError);
    QCOMPARE(more.body, "0123456789"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/less"_s).body, "0123"_ba);
}

void ScriptedRepliesTest::endsABodyWithoutLengthByClosing()
{
    ScriptedServer server;
    server.reply("/", Reply::text(200, "until the end").withoutContentLength());
    QNetworkAccessManager network;
    const Fetched fetched = fetch(network, server.origin() + u"/"_s);
    QCOMPARE(fetched.error, QNetworkReply::NoError);
    QCOMPARE(fetched.body, "until the end"_ba);
}

void ScriptedRepliesTest::chunksABody()
{
    ScriptedServer server;
    const Reply reply = Reply::text(200, "in several chunks").chunked(8);
    QVERIFY(reply.bytes().endsWith("\r\n\r\n8\r\nin sever\r\n8\r\nal chunk\r\n1\r\ns\r\n0\r\n\r\n"));
    server.reply("/", reply);
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "in several chunks"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "in several chunks"_ba);
    QCOMPARE(server.connectionCount(), 1);
}

void ScriptedRepliesTest::breaksChunks_data()
{
    QTest::addColumn<Reply::ChunkFault>("fault");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("bad size") << Reply::ChunkFault::BadSize << "4\r\nabcd\r\nno-size\r\nef\r\n0\r\n\r\n"_ba;
    QTest::newRow("short chunk") << Reply::ChunkFault::ShortChunk << "4\r\nabcd\r\n66\r\nef"_ba;
    QTest::newRow("no separator") << Reply::ChunkFault::NoSeparator << "4\r\nabcd2\r\nef0\r\n\r\n"_ba;
    QTest::newRow("no last chunk") << Reply::ChunkFault::NoLastChunk << "4\r\nabcd\r\n2\r\nef\r\n"_ba;
}

void ScriptedRepliesTest::breaksChunks()
{
    QFETCH(Reply::ChunkFault, fault);
    QFETCH(QByteArray, body);
    ScriptedServer server;
    server.reply("/", Reply::text(200, "abcdef").chunked(4, fault));
    RawClient client(server);
    client.sendGet("/");
    QTRY_VERIFY(!client.isConnected());
    QVERIFY2(client.received().endsWith("\r\n\r\n" + body), client.received().constData());
}

void ScriptedRepliesTest::closesAKeptConnectionWhenIdle()
{
    ScriptedServer server;
    server.reply("/", Reply::text(200, "kept").keepAliveThenCloseIdle(50));
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "kept"_ba);
    QCOMPARE(server.openConnectionCount(), 1);
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, "kept"_ba);
    QCOMPARE(server.connectionCount(), 2);
}

void ScriptedRepliesTest::setsCookies()
{
    ScriptedServer server;
    server.reply("/", Reply::empty(200).setCookie("id=1; Path=/").setCookie("b=2; Path=/"));
    QNetworkAccessManager network;
    fetch(network, server.origin() + u"/"_s);
    fetch(network, server.origin() + u"/"_s);
    QVERIFY(!server.requests().constFirst().hasHeader("Cookie"));
    QCOMPARE(server.requests().constLast().header("Cookie"), "id=1; b=2"_ba);
}

void ScriptedRepliesTest::redirects()
{
    ScriptedServer server;
    ScriptedServer other;
    server.reply("/from", Reply::redirect(307, (other.origin() + u"/to"_s).toLatin1()));
    other.reply("/to", Reply::text(200, "arrived"));
    QNetworkAccessManager network;
    QCOMPARE(post(network, server.origin() + u"/from"_s, "a=1").body, "arrived"_ba);
    QCOMPARE(other.requests("/to").constFirst().body, "a=1"_ba);
}

void ScriptedRepliesTest::interimRepliesComeFirst()
{
    ScriptedServer server;
    const QByteArray interim = "HTTP/1.1 103 Early Hints\r\nLink: <x>\r\n\r\n";
    server.reply("/", Reply::raw(interim + Reply::text(200, "final").bytes()));
    RawClient client(server);
    client.sendGet("/");
    QTRY_VERIFY(client.received().startsWith(interim + "HTTP/1.1 200 OK\r\n"));
}

QTEST_GUILESS_MAIN(ScriptedRepliesTest)
#include "scripted_replies_test.moc"
