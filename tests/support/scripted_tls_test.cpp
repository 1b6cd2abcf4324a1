// The scripted server over TLS: which servers the client accepts and which not, and that the latter receive no HTTP.
#include "support/client_test.h"
#include "support/self_test_clients.h"
#include "support/system_memory.h"

#include <QSslSocket>

using support::fetch;
using support::Fetched;
using support::HandshakeFault;
using support::Reply;
using support::ScriptedServer;
using support::TlsIdentity;
using support::TlsMaterial;
using support::TrustedCa;

class ScriptedTlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_material = std::make_unique<TlsMaterial>();
        QVERIFY2(m_material->isUsable(), qPrintable(m_material->errorText()));
    }

    void servesAClientThatTrustsTheAuthorityWhileItDoes()
    {
        ScriptedServer server(m_material->good());
        server.reply("/t", Reply::json(200, "{}"));
        {
            const TrustedCa trust(m_material->authority());
            for (const QString& host : {u"127.0.0.1"_s, u"localhost"_s}) {
                QNetworkAccessManager network;
                QCOMPARE(fetch(network, server.origin(host) + u"/t"_s).body, "{}"_ba);
            }
        }
        QCOMPARE(server.connectionCount(), 2);
        QCOMPARE(server.httpBytesReceived(),
                 server.requests().constFirst().raw.size() + server.requests().constLast().raw.size());
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/t"_s).error, QNetworkReply::SslHandshakeFailedError);
        QCOMPARE(server.count(), 2);
    }

    void clientsThatRefuseTheCertificateSendNothing_data()
    {
        QTest::addColumn<TlsIdentity>("identity");
        QTest::addColumn<QSslError::SslError>("reason");
        QTest::newRow("self-signed") << m_material->selfSigned() << QSslError::SelfSignedCertificate;
        QTest::newRow("expired") << m_material->expired() << QSslError::CertificateExpired;
        QTest::newRow("not yet valid") << m_material->notYetValid() << QSslError::CertificateNotYetValid;
        QTest::newRow("wrong host") << m_material->wrongHost() << QSslError::HostNameMismatch;
        QTest::newRow("unknown authority") << m_material->unknownAuthority() << QSslError::SelfSignedCertificateInChain;
    }

    void clientsThatRefuseTheCertificateSendNothing()
    {
        QFETCH(TlsIdentity, identity);
        QFETCH(QSslError::SslError, reason);
        QVERIFY2(m_material->isUsable(), qPrintable(m_material->errorText()));
        const TrustedCa trust(m_material->authority());
        ScriptedServer server(identity);
        QNetworkAccessManager network;
        QList<QSslError::SslError> reasons;
        connect(&network, &QNetworkAccessManager::sslErrors, this, [&](QNetworkReply*, const QList<QSslError>& errors) {
            for (const QSslError& error : errors) {
                reasons.append(error.error());
            }
        });
        QCOMPARE(fetch(network, server.origin() + u"/secret"_s).error, QNetworkReply::SslHandshakeFailedError);
        QCOMPARE(reasons, QList<QSslError::SslError>{reason});
        QCOMPARE(server.connectionCount(), 1);
        QTRY_COMPARE(server.openConnectionCount(), 0);
        QCOMPARE(server.httpBytesReceived(), 0);
    }

    void sendsAHugeBodyInLittleMemory()
    {
        const TrustedCa trust(m_material->authority());
        ScriptedServer server(m_material->good());
        server.reply("/", Reply::huge(200, 1024LL * 1024 * 1024 * 1024));
        const qint64 peakBefore = support::peakMemoryBytes();
        QNetworkAccessManager network;
        QNetworkReply* reply = network.get(QNetworkRequest(QUrl(server.origin() + u"/"_s)));
        reply->setReadBufferSize(64LL * 1024);
        const auto received = std::make_shared<qint64>(0);
        connect(reply, &QNetworkReply::readyRead, this, [received, reply] { *received += reply->readAll().size(); });
        QTRY_VERIFY_WITH_TIMEOUT(*received > 100LL * 1024 * 1024 || reply->isFinished(), 60000);
        QVERIFY(!reply->isFinished());
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
        QTRY_COMPARE(server.openConnectionCount(), 0);
        QVERIFY(support::peakMemoryBytes() - peakBefore < 40LL * 1024 * 1024);
    }

    void stallsTheHandshake()
    {
        ScriptedServer server(HandshakeFault::Silence);
        QNetworkAccessManager network;
        QCOMPARE(fetch(network, server.origin() + u"/"_s, 200).error, QNetworkReply::OperationCanceledError);
        QVERIFY(server.connectionCount() >= 1);
        QCOMPARE(server.httpBytesReceived(), 0);
        support::RawClient client(server);
        client.sendGet("/"); // unencrypted HTTP is counted
        QTRY_VERIFY(server.httpBytesReceived() > 0);
    }

    void refusesAllButAnOldVersion()
    {
        ScriptedServer server(HandshakeFault::OldVersion);
        QSslSocket client;
        client.connectToHostEncrypted(u"127.0.0.1"_s, server.port());
        QTRY_VERIFY(client.error() == QAbstractSocket::SslHandshakeFailedError);
        QVERIFY2(client.errorString().contains(u"protocol"_s), qPrintable(client.errorString()));
        QCOMPARE(server.httpBytesReceived(), 0);
    }

private:
    std::unique_ptr<TlsMaterial> m_material;
};

TARNWICK_TEST(ScriptedTlsTest)
#include "scripted_tls_test.moc"
