// What the scripted server records, whom it answers and when: over plain HTTP with a real network stack.
#include "support/scripted_server.h"

#include "support/message_catcher.h"
#include "support/self_test_clients.h"

#include <QTest>

#include <memory>
#include <vector>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;
using support::fetch;
using support::Fetched;
using support::finish;
using support::post;
using support::RawClient;
using support::RecordedRequest;
using support::Reply;
using support::ScriptedServer;

class ScriptedServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsEveryByteAsItCame();
    void recordsRequestsThatArriveInPieces();
    void recordsThePostOfTheNetworkStack();
    void answersAnUnroutedPathWith404();
    void prefersTheRouteToTheHandler();
    void playsRepliesInTurnAndRepeatsTheLast();
    void replacesARouteWhileRunning();
    void holdsUntilReleased();
    void survivesAClientThatVanishesWhileHeld();
    void survivesAClientThatVanishesBeforeADelayedAnswer();
    void keepsConnectionsAlive();
    void answersPipelinedRequestsInOrder();
    void servesManyConnectionsAtOnce();
    void closesAfterAnHttp10Request();
    void closesIdleConnectionsOnly();
    void resetsAllConnections();
    void refusesWhenStoppedAndServesAgainOnTheSamePort();
};

void ScriptedServerTest::recordsEveryByteAsItCame()
{
    ScriptedServer server;
    RawClient client(server);
    const QByteArray sent = "POST /a%20b?x=1&y=%41 HTTP/1.1\r\nHost: h\r\nX-One:  padded \r\nx-one: second\r\n"
                            "content-length: 5\r\n\r\n\x00\xff\r\n!"_ba;
    client.send(sent);
    QTRY_COMPARE(server.count(), 1);

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
    QCOMPARE(server.httpBytesReceived(), sent.size());
}

void ScriptedServerTest::recordsRequestsThatArriveInPieces()
{
    ScriptedServer server;
    RawClient client(server);
    const QByteArray sent = "POST /p HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc";
    for (qsizetype at = 0; at < sent.size(); ++at) {
        client.send(sent.mid(at, 1));
        QTRY_COMPARE(server.httpBytesReceived(), at + 1);
    }
    QCOMPARE(server.count("/p"), 1);
    QCOMPARE(server.requests().constFirst().raw, sent);
}

void ScriptedServerTest::recordsThePostOfTheNetworkStack()
{
    ScriptedServer server;
    server.reply("/form", Reply::json(200, R"({"ok":true})"));
    QNetworkAccessManager network;
    const Fetched fetched = post(network, server.origin() + u"/form?q=1"_s, "a=1&b=%2B");
    QCOMPARE(fetched.status, 200);
    QCOMPARE(fetched.body, R"({"ok":true})"_ba);
    const RecordedRequest request = server.requests("/form").constFirst();
    QCOMPARE(request.target, "/form?q=1"_ba);
    QCOMPARE(request.body, "a=1&b=%2B"_ba);
    QCOMPARE(request.header("content-type"), "application/x-www-form-urlencoded"_ba);
    QVERIFY(request.raw.endsWith("\r\n\r\na=1&b=%2B"));
}

void ScriptedServerTest::answersAnUnroutedPathWith404()
{
    ScriptedServer server;
    QNetworkAccessManager network;
    const Fetched fetched = fetch(network, server.origin() + u"/nowhere"_s);
    QCOMPARE(fetched.status, 404);
    QVERIFY(fetched.body.contains("/nowhere"));
}

void ScriptedServerTest::prefersTheRouteToTheHandler()
{
    ScriptedServer server;
    server.onRequest([](const RecordedRequest& request) { return Reply::text(200, "handler " + request.path()); });
    server.onRequest("/own", [](const RecordedRequest& request) { return Reply::text(200, request.method); });
    server.reply("/fixed", Reply::text(200, "route"));
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/fixed?x"_s).body, "route"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/own"_s).body, "GET"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/other"_s).body, "handler /other"_ba);
    server.removeRoute("/fixed");
    QCOMPARE(fetch(network, server.origin() + u"/fixed"_s).body, "handler /fixed"_ba);
}

void ScriptedServerTest::playsRepliesInTurnAndRepeatsTheLast()
{
    ScriptedServer server;
    server.replies("/poll", {Reply::empty(202), Reply::empty(202), Reply::text(200, "done")});
    QNetworkAccessManager network;
    QList<int> statuses;
    for (int i = 0; i < 4; ++i) {
        statuses.append(fetch(network, server.origin() + u"/poll"_s).status);
    }
    QCOMPARE(statuses, (QList<int>{202, 202, 200, 200}));
}

void ScriptedServerTest::replacesARouteWhileRunning()
{
    ScriptedServer server;
    QNetworkAccessManager network;
    server.reply("/r", Reply::text(200, "first"));
    QCOMPARE(fetch(network, server.origin() + u"/r"_s).body, "first"_ba);
    server.reply("/r", Reply::text(500, "second"));
    QCOMPARE(fetch(network, server.origin() + u"/r"_s).status, 500);
    server.forgetRequests();
    QCOMPARE(server.count(), 0);
}

void ScriptedServerTest::holdsUntilReleased()
{
    ScriptedServer server;
    server.hold("/slow");
    server.reply("/slow", Reply::text(200, "early"));
    server.reply("/quick", Reply::text(200, "quick"));
    QNetworkAccessManager network;
    QNetworkReply* slow = network.get(QNetworkRequest(QUrl(server.origin() + u"/slow"_s)));
    QTRY_COMPARE(server.heldCount("/slow"), 1);
    QCOMPARE(server.count("/slow"), 1);

    QCOMPARE(fetch(network, server.origin() + u"/quick"_s).body, "quick"_ba);
    QVERIFY(!slow->isFinished());
    server.reply("/slow", Reply::text(200, "late"));
    server.release("/slow");
    QCOMPARE(finish(slow).body, "late"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/slow"_s).body, "late"_ba);
}

void ScriptedServerTest::survivesAClientThatVanishesWhileHeld()
{
    const support::MessageCatcher catcher;
    ScriptedServer server;
    server.hold("/slow");
    RawClient client(server);
    client.sendGet("/slow");
    QTRY_COMPARE(server.heldCount("/slow"), 1);
    client.vanish();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(server.heldCount("/slow"), 0);
    server.release("/slow");
    QCOMPARE(catcher.messages(), QStringList());
}

void ScriptedServerTest::survivesAClientThatVanishesBeforeADelayedAnswer()
{
    const support::MessageCatcher catcher;
    ScriptedServer server;
    server.reply("/late", Reply::text(200, "late").delay(100));
    server.reply("/after", Reply::text(200, "after").delay(150));
    auto client = std::make_unique<RawClient>(server);
    client->sendGet("/late");
    QTRY_COMPARE(server.count("/late"), 1);
    client.reset();
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/after"_s).body, "after"_ba);
    QCOMPARE(catcher.messages(), QStringList());
}

void ScriptedServerTest::keepsConnectionsAlive()
{
    ScriptedServer server;
    server.reply("/k", Reply::text(200, "kept"));
    QNetworkAccessManager network;
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "kept"_ba);
    }
    QCOMPARE(server.connectionCount(), 1);
    QCOMPARE(server.requests().constLast().connection, 1);
    server.reply("/k", Reply::text(200, "last").connectionClose());
    QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "last"_ba);
    QCOMPARE(fetch(network, server.origin() + u"/k"_s).body, "last"_ba);
    QCOMPARE(server.connectionCount(), 2);
    QCOMPARE(server.requests().constLast().connection, 2);
}

void ScriptedServerTest::answersPipelinedRequestsInOrder()
{
    ScriptedServer server;
    server.reply("/1", Reply::raw("one ").keepOpen().delay(30));
    server.reply("/2", Reply::raw("two"));
    RawClient client(server);
    client.send("GET /1 HTTP/1.1\r\n\r\nGET /2 HTTP/1.1\r\n\r\n");
    QTRY_COMPARE(client.received(), "one two"_ba);
    QTRY_VERIFY(!client.isConnected());
}

void ScriptedServerTest::servesManyConnectionsAtOnce()
{
    ScriptedServer server;
    server.hold("/all");
    server.reply("/all", Reply::text(200, "all"));
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 60; ++i) {
        clients.push_back(std::make_unique<RawClient>(server));
        clients.back()->sendGet("/all");
    }
    QTRY_COMPARE(server.heldCount("/all"), 60);
    QCOMPARE(server.connectionCount(), 60);
    server.release("/all");
    for (const auto& client : clients) {
        QTRY_VERIFY(client->received().endsWith("all"));
    }
}

void ScriptedServerTest::closesAfterAnHttp10Request()
{
    ScriptedServer server;
    RawClient client(server);
    client.send("GET / HTTP/1.0\r\n\r\n");
    QTRY_VERIFY(!client.isConnected());
    QVERIFY(client.received().startsWith("HTTP/1.1 404 Not Found\r\n"));
}

void ScriptedServerTest::closesIdleConnectionsOnly()
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
    server.closeAllConnections();
    QTRY_VERIFY(!busy.isConnected());
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void ScriptedServerTest::resetsAllConnections()
{
    ScriptedServer server;
    RawClient client(server);
    QTRY_COMPARE(server.openConnectionCount(), 1);
    server.resetAllConnections();
    QTRY_VERIFY(!client.isConnected());
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void ScriptedServerTest::refusesWhenStoppedAndServesAgainOnTheSamePort()
{
    ScriptedServer server;
    server.reply("/s", Reply::text(200, "up"));
    const QString url = server.origin() + u"/s"_s;
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, url).status, 200);
    server.stop();
    QCOMPARE(fetch(network, url).error, QNetworkReply::ConnectionRefusedError);
    server.restart();
    QCOMPARE(server.origin() + u"/s"_s, url);
    QCOMPARE(fetch(network, url).body, "up"_ba);
}

QTEST_GUILESS_MAIN(ScriptedServerTest)
#include "scripted_server_test.moc"
