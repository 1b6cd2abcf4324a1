// Bodies far larger than memory should be: made while they are sent, and held back while nobody reads them.
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/self_test_clients.h"
#include "support/system_memory.h"

#include <QTest>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;
using support::fetch;
using support::RawClient;
using support::Reply;
using support::ScriptedServer;

namespace {

constexpr qint64 hugeSize = 128LL * 1024 * 1024 + 7;

} // namespace

class HugeRepliesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repeatsThePatternExactly();
    void sendsAHugeBodyInLittleMemory_data();
    void sendsAHugeBodyInLittleMemory();
    void holdsAHugeBodyBackWhileNobodyReads();
    void stopsAHugeBodyWhenTheClientHasGone();
};

void HugeRepliesTest::repeatsThePatternExactly()
{
    const QByteArray pattern = QByteArray("abcdefg").repeated(100);
    const Reply reply = Reply::huge(200, 200000, pattern);
    const QByteArray body = pattern.repeated(300).left(200000);
    QVERIFY(reply.bytes().endsWith("\r\n\r\n" + body));
    ScriptedServer server;
    server.replies("/", {reply, reply.chunked()});
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, body);
    QCOMPARE(fetch(network, server.origin() + u"/"_s).body, body);
}

void HugeRepliesTest::sendsAHugeBodyInLittleMemory_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("with a length") << Reply::huge(200, hugeSize, "abc");
    QTest::newRow("in one chunk") << Reply::huge(200, hugeSize).chunked();
    QTest::newRow("to the end of the connection") << Reply::huge(200, hugeSize).withoutContentLength();
}

void HugeRepliesTest::sendsAHugeBodyInLittleMemory()
{
    QFETCH(Reply, reply);
    ScriptedServer server;
    server.reply("/", reply);
    const qint64 peakBefore = support::peakMemoryBytes();
    RawClient client(server);
    client.discardAllBut(1000);
    client.sendGet("/");
    const qint64 wireSize = reply.script().size();
    QTRY_COMPARE_WITH_TIMEOUT(client.receivedSize(), wireSize, 60000);
    const qint64 growth = support::peakMemoryBytes() - peakBefore;
    qInfo("peak memory grew by %lld KiB", static_cast<long long>(growth / 1024));
    QVERIFY(growth < hugeSize / 4);
}

void HugeRepliesTest::holdsAHugeBodyBackWhileNobodyReads()
{
    constexpr qint64 size = 1024LL * 1024 * 1024 * 1024;
    ScriptedServer server;
    server.reply("/", Reply::huge(200, size));
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
}

void HugeRepliesTest::stopsAHugeBodyWhenTheClientHasGone()
{
    const support::MessageCatcher catcher;
    ScriptedServer server;
    server.reply("/", Reply::huge(200, 1024LL * 1024 * 1024 * 1024));
    RawClient client(server);
    client.sendGet("/");
    QTRY_VERIFY(client.received().size() > 1024LL * 1024);
    client.vanish();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(catcher.messages(), QStringList());
}

QTEST_GUILESS_MAIN(HugeRepliesTest)
#include "huge_replies_test.moc"
