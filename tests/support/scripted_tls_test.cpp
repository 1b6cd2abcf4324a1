// The scripted server over TLS. tls_faults_test uses the certificates that a client refuses.
#include "support/client_test.h"
#include "support/self_test_clients.h"

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
