// Servers whose identity does not hold, or that speak a TLS too old: nothing of a request may reach them.
#include "app/tarnwick_client_window.h"
#include "faults/fault_run.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"

#include <QTest>

#include <memory>

using support::Call;
using support::HandshakeFault;
using support::Reply;
using support::ScriptedServer;
using support::TlsIdentity;

/// A server that must not be trusted, and what the client says about it.
struct BadIdentity
{
    QByteArray name;
    TlsIdentity identity;
    QString reason;
};

class TlsFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void aServerThatIsNotTrustedGetsNothing_data();
    void aServerThatIsNotTrustedGetsNothing();
    void aTrustedServerIsAsked();

private:
    static std::unique_ptr<faults::FaultRun> newRun()
    {
        return std::make_unique<faults::FaultRun>([] { return std::make_unique<TarnwickClientWindow>(); });
    }

    std::unique_ptr<support::TlsMaterial> material;
    std::unique_ptr<support::TrustedCa> trust;
    QList<BadIdentity> identities;
    TlsIdentity good;
};

void TlsFaultsTest::initTestCase()
{
    material = std::make_unique<support::TlsMaterial>();
    identities = {
        {"self-signed", material->selfSigned(), u"The certificate is self-signed, and untrusted"_s},
        {"expired", material->expired(), u"The certificate has expired"_s},
        {"not yet valid", material->notYetValid(), u"The certificate is not yet valid"_s},
        {"another host's", material->wrongHost(), u"The host name did not match any of the valid hosts"_s},
        {"signed by nobody known", material->unknownAuthority(),
         u"The root certificate of the certificate chain is self-signed, and untrusted"_s},
    };
    good = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust = std::make_unique<support::TrustedCa>(material->authority());
}

void TlsFaultsTest::cleanupTestCase()
{
    trust.reset();
}

void TlsFaultsTest::aServerThatIsNotTrustedGetsNothing_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("identity");
    QTest::addColumn<QString>("reason");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        for (int index = 0; index < identities.size(); ++index) {
            const BadIdentity& bad = identities.at(index);
            QTest::addRow("%s: %s", support::callName(call), bad.name.constData()) << call << index << bad.reason;
        }
        QTest::addRow("%s: TLS 1.0", support::callName(call)) << call << -1 << u"unsupported protocol"_s;
    }
}

void TlsFaultsTest::aServerThatIsNotTrustedGetsNothing()
{
    QFETCH(Call, call);
    QFETCH(int, identity);
    QFETCH(QString, reason);
    const auto server = identity < 0 ? std::make_unique<ScriptedServer>(HandshakeFault::OldVersion)
                                     : std::make_unique<ScriptedServer>(identities.at(identity).identity);
    const auto run = newRun();
    QVERIFY(run->playAt(call, server->origin(u"localhost"_s)));
    QVERIFY(run->wasBusy());
    const QString status = run->bench().view().status();
    QVERIFY2(status.startsWith(u"SSL handshake failed"_s), qPrintable(status));
    QVERIFY2(status.contains(reason), qPrintable(status));
    QCOMPARE(run->seen(), run->expected({.status = 0, .errorText = status, .body = {}}));
    QVERIFY(server->connectionCount() > 0);
    QCOMPARE(server->httpBytesReceived(), 0);
    QCOMPARE(run->server.count(), 0);
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

/// What the rows above lack is the trust, and nothing else.
void TlsFaultsTest::aTrustedServerIsAsked()
{
    ScriptedServer server(good);
    server.reply(callPath(Call::LinkStart), Reply::json(500, R"({"message":"Trusted"})"));
    const auto run = newRun();
    QVERIFY(run->playAt(Call::LinkStart, server.origin(u"localhost"_s)));
    QCOMPARE(run->bench().view().status(), u"Trusted"_s);
    QCOMPARE(server.count(), 1);
}

QTEST_MAIN(TlsFaultsTest)
#include "tls_faults_test.moc"
