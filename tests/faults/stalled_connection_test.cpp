// Connections on which nothing moves any more. Built with a shorter limit for that than the real one, which has a check
// of its own.
#include "app/tarnwick_client_window.h"
#include "faults/connection_rows.h"
#include "faults/fault_run.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"

#include <QTest>

#include <memory>
#include <optional>

using faults::ConnectionRow;
using faults::FaultOutcome;
using support::Call;
using support::Reply;

class StalledConnectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theCallIsGivenUp_data();
    void theCallIsGivenUp();
    void aSilentHandshakeIsGivenUp_data();
    void aSilentHandshakeIsGivenUp();

private:
    std::unique_ptr<support::TlsMaterial> material;
    support::TlsIdentity identity;
    std::optional<support::TrustedCa> trust;
};

void StalledConnectionTest::initTestCase()
{
    material = std::make_unique<support::TlsMaterial>();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    identity = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust.emplace(material->authority());
}

void StalledConnectionTest::theCallIsGivenUp_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<FaultOutcome>("outcome");
    const auto calls = support::allCalls();
    const auto rows = faults::stalledRows();
    for (const Call call : calls) {
        for (const ConnectionRow& row : rows) {
            QTest::addRow("%s: %s", support::callName(call), row.name.constData())
                << false << call << row.reply << row.outcome;
        }
        QTest::addRow("%s, TLS: silence", support::callName(call))
            << true << call << rows.constFirst().reply << rows.constFirst().outcome;
    }
}

void StalledConnectionTest::theCallIsGivenUp()
{
    QFETCH(bool, isSecure);
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(FaultOutcome, outcome);
    const auto makeWindow = [] {
        return std::make_unique<TarnwickClientWindow>();
    };
    const auto run = isSecure ? std::make_unique<faults::FaultRun>(makeWindow, identity)
                              : std::make_unique<faults::FaultRun>(makeWindow);
    QVERIFY(run->play(call, reply));
    run->checkEnd(outcome);
}

void StalledConnectionTest::aSilentHandshakeIsGivenUp_data()
{
    QTest::addColumn<Call>("call");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call;
    }
}

void StalledConnectionTest::aSilentHandshakeIsGivenUp()
{
    QFETCH(Call, call);
    support::ScriptedServer silent(support::HandshakeFault::Silence);
    faults::FaultRun run([] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(run.playAt(call, silent.origin(u"localhost"_s)));
    QVERIFY(silent.connectionCount() > 0);
    QCOMPARE(silent.httpBytesReceived(), 0);
    run.checkEnd({.status = 0, .errorText = u"Operation canceled"_s, .body = {}}, {});
}

QTEST_MAIN(StalledConnectionTest)
#include "stalled_connection_test.moc"
