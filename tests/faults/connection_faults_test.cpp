// Connections that fail in every way in which networks and servers make them fail, for each of the five calls, with
// and without encryption. Built with a limit for stalled transfers that no slow machine reaches.
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

class ConnectionFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theCallEndsInOneSentence_data();
    void theCallEndsInOneSentence();
    void noConnectionAtAll_data();
    void noConnectionAtAll();
    void aKeptConnectionMayHaveBeenClosedMeanwhile_data();
    void aKeptConnectionMayHaveBeenClosedMeanwhile();

private:
    std::unique_ptr<faults::FaultRun> newRun(bool isSecure) const
    {
        const auto makeWindow = [] {
            return std::make_unique<TarnwickClientWindow>();
        };
        return isSecure ? std::make_unique<faults::FaultRun>(makeWindow, identity)
                        : std::make_unique<faults::FaultRun>(makeWindow);
    }

    std::unique_ptr<support::TlsMaterial> material;
    support::TlsIdentity identity;
    std::optional<support::TrustedCa> trust;
};

namespace {

/// What is done to each call, without encryption and with it.
template <typename Do>
void forEveryConnection(const Do& doIt)
{
    const auto calls = support::allCalls();
    for (const bool isSecure : {false, true}) {
        for (const Call call : calls) {
            doIt(isSecure, call, QByteArray(support::callName(call)) + (isSecure ? ", TLS" : ""));
        }
    }
}

} // namespace

void ConnectionFaultsTest::initTestCase()
{
    material = std::make_unique<support::TlsMaterial>();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    identity = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust.emplace(material->authority());
}

void ConnectionFaultsTest::theCallEndsInOneSentence_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<FaultOutcome>("outcome");
    forEveryConnection([](bool isSecure, Call call, const QByteArray& name) {
        const auto rows = faults::brokenOffRows(call) + faults::badBodyRows() + faults::harmlessRows();
        for (const ConnectionRow& row : rows) {
            QTest::newRow((name + ": " + row.name).constData()) << isSecure << call << row.reply << row.outcome;
        }
    });
}

void ConnectionFaultsTest::theCallEndsInOneSentence()
{
    QFETCH(bool, isSecure);
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(FaultOutcome, outcome);
    const auto run = newRun(isSecure);
    QVERIFY(run->play(call, reply));
    run->checkEnd(outcome);
}

void ConnectionFaultsTest::noConnectionAtAll_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("origin");
    QTest::addColumn<QString>("errorText");
    support::ScriptedServer gone;
    gone.stop();
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::addRow("%s: refused", support::callName(call)) << call << gone.origin() << u"Connection refused"_s;
        QTest::addRow("%s: unknown host", support::callName(call))
            << call << u"http://nowhere.invalid"_s << u"Host nowhere.invalid not found"_s;
    }
}

void ConnectionFaultsTest::noConnectionAtAll()
{
    QFETCH(Call, call);
    QFETCH(QString, origin);
    QFETCH(QString, errorText);
    const auto run = newRun(false);
    QVERIFY(run->playAt(call, origin));
    run->checkEnd({.status = 0, .errorText = errorText, .body = {}}, {});
}

void ConnectionFaultsTest::aKeptConnectionMayHaveBeenClosedMeanwhile_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::addColumn<Call>("call");
    forEveryConnection(
        [](bool isSecure, Call call, const QByteArray& name) { QTest::newRow(name.constData()) << isSecure << call; });
}

void ConnectionFaultsTest::aKeptConnectionMayHaveBeenClosedMeanwhile()
{
    QFETCH(bool, isSecure);
    QFETCH(Call, call);
    const auto run = newRun(isSecure);
    const FaultOutcome refused{.status = 500, .errorText = u"Tarnwick returned HTTP 500."_s, .body = {}};
    QVERIFY(run->play(call, Reply::json(500, "{}").keepAliveThenCloseIdle(1)));
    QVERIFY(run->wasBusy());
    QCOMPARE(run->seen(), run->expected(refused));
    QCOMPARE(run->arrivals(refused), run->expectedArrivals(refused));
    QTRY_COMPARE(run->server.openConnectionCount(), 0);

    QVERIFY(run->asksAnother()); // by then the client has noticed, too
    const int connections = run->server.connectionCount();
    const FaultOutcome answered{.status = 200, .errorText = {}, .body = {}};
    QVERIFY(run->playAgain(Reply::json(200, "{}")));
    QVERIFY(run->server.connectionCount() > connections);
    const QList<QByteArray> approval = call == Call::Session ? QList{callPath(Call::LinkPoll)} : QList<QByteArray>();
    run->checkEnd(answered, approval + run->expectedArrivals(answered));
}

QTEST_MAIN(ConnectionFaultsTest)
#include "connection_faults_test.moc"
