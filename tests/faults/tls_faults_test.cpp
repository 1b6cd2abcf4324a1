// Servers with an invalid certificate or a TLS version that is too old: no byte of a request may reach them.
#include "faults/fault_run.h"
#include "support/client_test.h"

#include <map>
#include <optional>
#include <string>

using faults::FaultRun;
using faults::Outcome;
using support::Call;
using support::Reply;
using support::ScriptedServer;

class TlsFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        servers.emplace("self-signed", material.selfSigned());
        servers.emplace("expired", material.expired());
        servers.emplace("not yet valid", material.notYetValid());
        servers.emplace("another host's", material.wrongHost());
        servers.emplace("signed by nobody known", material.unknownAuthority());
        servers.emplace("trusted", material.good());
        servers.emplace("TLS 1.0", support::HandshakeFault::OldVersion);
        QVERIFY2(material.isUsable(), qPrintable(material.errorText()));
        trust.emplace(material.authority());
    }

    void aServerThatIsNotTrustedGetsNothing_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("reason");
        const auto add = [](Call call, const char* server, const QString& reason) {
            QTest::addRow("%s: %s", support::callName(call), server) << call << QString::fromLatin1(server) << reason;
        };
        for (const Call call : support::allCalls()) {
            add(call, "self-signed", u"The certificate is self-signed, and untrusted"_s);
        }
        for (const Call call : {Call::Session, Call::CreateInstance}) {
            add(call, "expired", u"The certificate has expired"_s);
            add(call, "not yet valid", u"The certificate is not yet valid"_s);
            add(call, "another host's", u"The host name did not match any of the valid hosts"_s);
            add(call, "signed by nobody known",
                u"The root certificate of the certificate chain is self-signed, and untrusted"_s);
            add(call, "TLS 1.0", u"unsupported protocol"_s);
        }
    }

    void aServerThatIsNotTrustedGetsNothing()
    {
        QFETCH(Call, call);
        QFETCH(QString, server);
        QFETCH(QString, reason);
        const ScriptedServer& bad = servers.at(server.toStdString());
        const int connections = bad.connectionCount();
        FaultRun run;
        QVERIFY(run.playAt(call, bad.origin(u"localhost"_s)));
        const QString status = run.view().status();
        QVERIFY2(status.startsWith(u"SSL handshake failed"_s) && status.contains(reason), qPrintable(status));
        run.checkEnd(Outcome::failed(0, status));
        QVERIFY(bad.connectionCount() > connections);
        QCOMPARE(bad.httpBytesReceived(), 0);
    }

    /// The servers above fail because of their certificates, not for another reason.
    void aTrustedServerIsAsked()
    {
        ScriptedServer& server = servers.at("trusted");
        server.reply(callPath(Call::LinkStart), Reply::json(500, R"({"message":"Trusted"})"));
        FaultRun run;
        QVERIFY(run.playAt(Call::LinkStart, server.origin(u"localhost"_s)));
        QCOMPARE(run.view().status(), u"Trusted"_s);
        QCOMPARE(server.count(), 1);
    }

private:
    support::TlsMaterial material;
    std::optional<support::TrustedCa> trust;
    std::map<std::string, ScriptedServer> servers;
};

TARNWICK_TEST(TlsFaultsTest)
#include "tls_faults_test.moc"
