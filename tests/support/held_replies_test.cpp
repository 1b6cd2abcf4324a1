// Answers that stop after their heads until they are told to go on.
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/self_test_clients.h"

#include <QTest>

using support::RawClient;
using support::Reply;
using support::ScriptedServer;

namespace {

/// All that goes out, and the head of it.
struct ReplyParts
{
    explicit ReplyParts(const Reply& reply) : whole(reply.bytes()), head(whole.first(whole.indexOf("\r\n\r\n") + 4)) {}

    QByteArray whole;
    QByteArray head;
};

} // namespace

class HeldRepliesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBodyWaitsAfterTheHead_data();
    void theBodyWaitsAfterTheHead();
    void whatHasNoBodyWaitsForNothing_data();
    void whatHasNoBodyWaitsForNothing();
    void aClientMayVanishMeanwhile();
};

void HeldRepliesTest::theBodyWaitsAfterTheHead_data()
{
    QTest::addColumn<Reply>("reply");
    const Reply whole = Reply::text(200, "0123456789");
    QTest::newRow("plain") << whole;
    QTest::newRow("dripping") << whole.drip(3, 1);
    QTest::newRow("a dripping body") << whole.dripBody(1, 1);
    QTest::newRow("without a length") << whole.withoutContentLength();
    QTest::newRow("in chunks") << whole.chunked(3);
    QTest::newRow("cut") << whole.cutBodyAfter(4);
}

void HeldRepliesTest::theBodyWaitsAfterTheHead()
{
    QFETCH(Reply, reply);
    ScriptedServer server;
    server.reply("/", reply.holdBody());
    server.reply("/other", Reply::text(200, "other"));
    RawClient client(server);
    client.sendGet("/");
    const ReplyParts parts(reply);
    QTRY_COMPARE(client.received(), parts.head);

    // Another client is served from beginning to end meanwhile.
    RawClient other(server);
    other.sendGet("/other");
    QTRY_VERIFY(other.received().endsWith("\r\n\r\nother"));
    QCOMPARE(client.received(), parts.head);
    QCOMPARE(server.heldBodyCount(), 1);
    server.releaseBodies();
    QTRY_COMPARE(client.received(), parts.whole);
}

void HeldRepliesTest::whatHasNoBodyWaitsForNothing_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("an empty body") << Reply::empty(404);
    QTest::newRow("no head") << Reply::raw("half a status li");
    QTest::newRow("a cut head") << Reply::text(200, "0123456789").cutAfter(20);
}

void HeldRepliesTest::whatHasNoBodyWaitsForNothing()
{
    QFETCH(Reply, reply);
    ScriptedServer server;
    server.reply("/", reply.holdBody());
    RawClient client(server);
    client.sendGet("/");
    QTRY_COMPARE(client.received(), reply.bytes());
    QCOMPARE(server.heldBodyCount(), 0);
}

void HeldRepliesTest::aClientMayVanishMeanwhile()
{
    const support::MessageCatcher catcher;
    ScriptedServer server;
    server.reply("/", Reply::text(200, "0123456789").holdBody());
    RawClient client(server);
    client.sendGet("/");
    QTRY_VERIFY(client.received().endsWith("\r\n\r\n"));
    client.vanish();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    server.releaseBodies();
    QCOMPARE(catcher.messages(), QStringList());
}

QTEST_GUILESS_MAIN(HeldRepliesTest)
#include "held_replies_test.moc"
