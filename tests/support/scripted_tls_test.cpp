// The scripted server over TLS: who is let in, who is turned away, and that those never send a byte of HTTP.
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/self_test_clients.h"
#include "support/system_memory.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"

#include <QSslSocket>
#include <QTest>

#include <functional>
#include <memory>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;
using support::fetch;
using support::Fetched;
using support::HandshakeFault;
using support::post;
using support::Reply;
using support::ScriptedServer;
using support::TlsIdentity;
using support::TlsMaterial;
using support::TrustedCa;

class ScriptedTlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void servesAClientThatTrustsTheAuthority_data();
    void servesAClientThatTrustsTheAuthority();
    void speaksTheProtocolAskedFor_data();
    void speaksTheProtocolAskedFor();
    void clientsThatRefuseTheCertificateSendNothing_data();
    void clientsThatRefuseTheCertificateSendNothing();
    void trustEndsWithItsGuard();
    void misbehavesAsOverPlainHttp_data();
    void misbehavesAsOverPlainHttp();
    void sendsAHugeBodyInLittleMemory();
    void stallsTheHandshake();
    void refusesAllButAnOldVersion();
    void noticesHttpInTheClear();

private:
    std::unique_ptr<TlsMaterial> m_material;
};

void ScriptedTlsTest::initTestCase()
{
    QVERIFY(QSslSocket::supportsSsl());
    m_material = std::make_unique<TlsMaterial>();
    QVERIFY2(m_material->isUsable(), qPrintable(m_material->errorText()));
}

void ScriptedTlsTest::servesAClientThatTrustsTheAuthority_data()
{
    QTest::addColumn<QString>("host");
    QTest::newRow("by address") << u"127.0.0.1"_s;
    QTest::newRow("by name") << u"localhost"_s;
}

void ScriptedTlsTest::servesAClientThatTrustsTheAuthority()
{
    QFETCH(QString, host);
    const TrustedCa trust(m_material->authority());
    ScriptedServer server(m_material->good());
    server.reply("/t", Reply::json(200, "{}"));
    QVERIFY(server.origin().startsWith(u"https://127.0.0.1:"_s));
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin(host) + u"/t"_s).body, "{}"_ba);
    const Fetched second = post(network, server.origin(host) + u"/t"_s, "a=b");
    QCOMPARE(second.status, 200);
    QCOMPARE(server.connectionCount(), 1);
    QCOMPARE(server.count("/t"), 2);
    QCOMPARE(server.requests().constLast().body, "a=b"_ba);
    QCOMPARE(server.httpBytesReceived(),
             server.requests().constFirst().raw.size() + server.requests().constLast().raw.size());
}

void ScriptedTlsTest::speaksTheProtocolAskedFor_data()
{
    QTest::addColumn<QSsl::SslProtocol>("protocol");
    QTest::newRow("TLS 1.2") << QSsl::TlsV1_2;
    QTest::newRow("TLS 1.3") << QSsl::TlsV1_3;
}

void ScriptedTlsTest::speaksTheProtocolAskedFor()
{
    QFETCH(QSsl::SslProtocol, protocol);
    const TrustedCa trust(m_material->authority());
    ScriptedServer server(m_material->good(), protocol);
    QSslSocket client;
    client.connectToHostEncrypted(u"127.0.0.1"_s, server.port());
    QTRY_VERIFY(client.isEncrypted());
    QCOMPARE(client.sessionProtocol(), protocol);
    client.write("GET / HTTP/1.1\r\n\r\n");
    QTRY_VERIFY(client.bytesAvailable() > 0);
    QVERIFY(client.readAll().startsWith("HTTP/1.1 404 "));
}

void ScriptedTlsTest::clientsThatRefuseTheCertificateSendNothing_data()
{
    using Maker = std::function<TlsIdentity(TlsMaterial&)>;
    QTest::addColumn<Maker>("maker");
    QTest::newRow("self-signed") << Maker(&TlsMaterial::selfSigned);
    QTest::newRow("expired") << Maker(&TlsMaterial::expired);
    QTest::newRow("not yet valid") << Maker(&TlsMaterial::notYetValid);
    QTest::newRow("wrong host") << Maker(&TlsMaterial::wrongHost);
    QTest::newRow("unknown authority") << Maker(&TlsMaterial::unknownAuthority);
}

void ScriptedTlsTest::clientsThatRefuseTheCertificateSendNothing()
{
    QFETCH(std::function<TlsIdentity(TlsMaterial&)>, maker);
    const TlsIdentity identity = maker(*m_material);
    QVERIFY2(m_material->isUsable(), qPrintable(m_material->errorText()));
    QVERIFY(!identity.key.isNull());
    const TrustedCa trust(m_material->authority());
    const support::MessageCatcher catcher;
    ScriptedServer server(identity);
    QNetworkAccessManager network;
    const Fetched fetched = fetch(network, server.origin() + u"/secret"_s);
    QCOMPARE(fetched.error, QNetworkReply::SslHandshakeFailedError);
    QCOMPARE(server.connectionCount(), 1);
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(server.httpBytesReceived(), 0);
    QCOMPARE(server.count(), 0);
    QCOMPARE(catcher.messages(), QStringList());
}

void ScriptedTlsTest::trustEndsWithItsGuard()
{
    ScriptedServer server(m_material->good());
    server.reply("/t", Reply::text(200, "trusted"));
    {
        const TrustedCa trust(m_material->authority());
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/t"_s).body, "trusted"_ba);
    }
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/t"_s).error, QNetworkReply::SslHandshakeFailedError);
    QCOMPARE(server.count(), 1);
}

void ScriptedTlsTest::misbehavesAsOverPlainHttp_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    const Reply whole = Reply::text(200, "0123456789");
    QTest::newRow("closed") << Reply::closeWithoutAnswer() << QNetworkReply::RemoteHostClosedError;
    QTest::newRow("reset") << Reply::resetWithoutAnswer() << QNetworkReply::RemoteHostClosedError;
    QTest::newRow("cut head") << whole.cutAfter(12) << QNetworkReply::RemoteHostClosedError;
    QTest::newRow("cut body, reset") << whole.cutBodyAfter(3).thenReset() << QNetworkReply::RemoteHostClosedError;
    QTest::newRow("drip") << whole.drip(1, 1) << QNetworkReply::NoError;
    QTest::newRow("silence") << Reply::never() << QNetworkReply::OperationCanceledError;
}

void ScriptedTlsTest::misbehavesAsOverPlainHttp()
{
    QFETCH(Reply, reply);
    QFETCH(QNetworkReply::NetworkError, error);
    const TrustedCa trust(m_material->authority());
    const support::MessageCatcher catcher;
    ScriptedServer server(m_material->good());
    server.reply("/", reply);
    QNetworkAccessManager network;
    // Only silence has to run into the timeout; a slow machine must not make the others do so.
    const int timeoutMs = error == QNetworkReply::OperationCanceledError ? 1000 : 60000;
    QCOMPARE(fetch(network, server.origin() + u"/"_s, timeoutMs).error, error);
    QVERIFY(server.count("/") >= 1); // the network stack tries again when it got no answer at all
    QCOMPARE(catcher.messages(), QStringList());
}

void ScriptedTlsTest::sendsAHugeBodyInLittleMemory()
{
    const TrustedCa trust(m_material->authority());
    constexpr qint64 size = 1024LL * 1024 * 1024 * 1024;
    ScriptedServer server(m_material->good());
    server.reply("/", Reply::huge(200, size));
    const qint64 peakBefore = support::peakMemoryBytes();
    QNetworkAccessManager network;
    QNetworkReply* reply = network.get(QNetworkRequest(QUrl(server.origin() + u"/"_s)));
    reply->setReadBufferSize(64LL * 1024);
    const auto received = std::make_shared<qint64>(0);
    connect(reply, &QNetworkReply::readyRead, this, [received, reply] { *received += reply->readAll().size(); });
    QTRY_VERIFY_WITH_TIMEOUT(*received > 100LL * 1024 * 1024 || reply->isFinished(), 60000);
    QVERIFY(!reply->isFinished());
    reply->abort();
    reply->deleteLater();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    const qint64 growth = support::peakMemoryBytes() - peakBefore;
    qInfo("peak memory grew by %lld KiB", static_cast<long long>(growth / 1024));
    QVERIFY(growth < 40LL * 1024 * 1024);
}

void ScriptedTlsTest::stallsTheHandshake()
{
    ScriptedServer server(HandshakeFault::Silence);
    {
        QNetworkAccessManager network;
        const Fetched fetched = fetch(network, server.origin() + u"/"_s, 200);
        QCOMPARE(fetched.error, QNetworkReply::OperationCanceledError);
    }
    QVERIFY(server.connectionCount() >= 1);
    QCOMPARE(server.httpBytesReceived(), 0);
}

void ScriptedTlsTest::refusesAllButAnOldVersion()
{
    ScriptedServer server(HandshakeFault::OldVersion);
    QSslSocket client;
    client.connectToHostEncrypted(u"127.0.0.1"_s, server.port());
    QTRY_VERIFY(client.error() == QAbstractSocket::SslHandshakeFailedError);
    QVERIFY2(client.errorString().contains(u"protocol"_s), qPrintable(client.errorString()));
    QNetworkAccessManager network;
    QCOMPARE(fetch(network, server.origin() + u"/"_s, 5000).error, QNetworkReply::SslHandshakeFailedError);
    QCOMPARE(server.httpBytesReceived(), 0);
}

void ScriptedTlsTest::noticesHttpInTheClear()
{
    ScriptedServer server(HandshakeFault::Silence);
    support::RawClient client(server);
    client.sendGet("/");
    QTRY_VERIFY(server.httpBytesReceived() > 0);
}

QTEST_GUILESS_MAIN(ScriptedTlsTest)
#include "scripted_tls_test.moc"
