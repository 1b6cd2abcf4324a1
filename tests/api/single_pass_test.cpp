// One press is one request: a POST whose connection ends without an answer is not sent again, for the service may
// have carried it out.
#include "app/tarnwick_client_window.h"

#include "support/creation_form.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"

#include <QTest>

#include <algorithm>
#include <memory>
#include <optional>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class SinglePassTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aCreationArrivesOnce_data();
    void aCreationArrivesOnce();
    void aCodeRequestArrivesOnce_data();
    void aCodeRequestArrivesOnce();
    void aConnectionThatEndedMeanwhileIsReplaced_data();
    void aConnectionThatEndedMeanwhileIsReplaced();
    void aConnectionThatEndsUnderThePressBringsAtMostOneCreation_data();
    void aConnectionThatEndsUnderThePressBringsAtMostOneCreation();
    void aRefusedConnectionSendsNothingLater();

private:
    std::unique_ptr<ScriptedServer> newServer(bool isSecure) const
    {
        return isSecure ? std::make_unique<ScriptedServer>(identity) : std::make_unique<ScriptedServer>();
    }

    std::unique_ptr<support::TlsMaterial> material;
    support::TlsIdentity identity;
    std::optional<support::TrustedCa> trust;
    std::unique_ptr<support::MessageCatcher> messages;
};

namespace {

auto singlePassWindowMaker()
{
    return [] {
        return std::make_unique<TarnwickClientWindow>();
    };
}

struct UnansweredEnd
{
    const char* name;
    Reply reply;
};

/// Ways in which a connection can end before the client has an answer.
QList<UnansweredEnd> unansweredEnds()
{
    return {{"closed", Reply::closeWithoutAnswer()},
            {"reset", Reply::resetWithoutAnswer()},
            {"half a status line", Reply::raw("HTTP/1.1 20")},
            {"half a status line, reset", Reply::raw("HTTP/1.1 20").thenReset()},
            {"half the headers", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: applica")},
            {"garbage", Reply::raw("\x16\x03\x01 this is no answer\r\n\r\n")},
            {"an empty line", Reply::raw("\r\n")}};
}

void addUnansweredEnds()
{
    QTest::addColumn<Reply>("end");
    QTest::addColumn<bool>("isSecure");
    QTest::addColumn<bool>("isKeptAlive");
    const auto ends = unansweredEnds();
    for (const UnansweredEnd& end : ends) {
        for (const bool isSecure : {false, true}) {
            for (const bool isKeptAlive : {false, true}) {
                QTest::addRow("%s, %s, %s connection", end.name, isSecure ? "TLS" : "plain",
                              isKeptAlive ? "kept-alive" : "fresh")
                    << end.reply << isSecure << isKeptAlive;
            }
        }
    }
}

/// Everything that the form holds, and whether it can be worked on.
QStringList singlePassForm(const support::WindowView& view)
{
    const auto controls = view.creationForm();
    const bool isEnabled =
        std::all_of(controls.begin(), controls.end(), [](const QWidget* control) { return control->isEnabled(); });
    return support::creationFormIn(view).words() << (isEnabled ? u"enabled"_s : u"not all of it enabled"_s);
}

void addSchemes()
{
    QTest::addColumn<bool>("isSecure");
    QTest::newRow("plain") << false;
    QTest::newRow("TLS") << true;
}

} // namespace

void SinglePassTest::initTestCase()
{
    material = std::make_unique<support::TlsMaterial>();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    identity = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust.emplace(material->authority());
}

void SinglePassTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void SinglePassTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void SinglePassTest::aCreationArrivesOnce_data()
{
    addUnansweredEnds();
}

void SinglePassTest::aCreationArrivesOnce()
{
    QFETCH(Reply, end);
    QFETCH(bool, isSecure);
    QFETCH(bool, isKeptAlive);
    const auto server = newServer(isSecure);
    support::ServiceBench bench(*server, singlePassWindowMaker());
    server->reply(callPath(Call::Session), Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b"}]})"));
    if (!isKeptAlive) {
        // The last answer before the creation ends its connection.
        server->reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{}]})").connectionClose());
    }
    QVERIFY(bench.prepare(Call::CreateInstance));
    if (!isKeptAlive) {
        QTRY_COMPARE(server->openConnectionCount(), 0);
    }
    const int connectionsBefore = server->connectionCount();
    support::fillCreationForm(bench.view());
    const QStringList formBefore = singlePassForm(bench.view());
    server->reply(callPath(Call::CreateInstance), end);
    bench.bringAbout(Call::CreateInstance);
    QTRY_VERIFY(bench.view().button(u"Create GDPS")->isEnabled());

    const support::WindowView view = bench.view();
    QVERIFY(!view.status().isEmpty());
    QVERIFY(view.status() != u"Creating your GDPS from the Tarnwick desktop client..."_s);
    QVERIFY(!view.status().startsWith("Loaded"_L1));
    QCOMPARE(singlePassForm(view), formBefore);
    QCOMPARE(server->connectionCount(), connectionsBefore + (isKeptAlive ? 0 : 1));

    // Whatever had been sent before this request would be here by now.
    server->reply(callPath(Call::Instances), Reply::json(200, "{}"));
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(view.status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(server->count(callPath(Call::CreateInstance)), 1);
}

void SinglePassTest::aCodeRequestArrivesOnce_data()
{
    addUnansweredEnds();
}

void SinglePassTest::aCodeRequestArrivesOnce()
{
    QFETCH(Reply, end);
    QFETCH(bool, isSecure);
    QFETCH(bool, isKeptAlive);
    const auto server = newServer(isSecure);
    support::ServiceBench bench(*server, singlePassWindowMaker());
    if (isKeptAlive) {
        QVERIFY(bench.settleLinked());
    } else {
        bench.startUnlinked();
    }
    server->reply(callPath(Call::LinkStart), end);
    bench.bringAbout(Call::LinkStart);
    QTRY_VERIFY(bench.view().button(u"Generate Link Code")->isEnabled());
    QVERIFY(bench.view().status() != u"Requesting a new Tarnwick PC link code..."_s);
    QVERIFY(!bench.view().status().startsWith("Code "_L1));

    server->reply(callPath(Call::LinkStart), Reply::empty(500));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(server->count(callPath(Call::LinkStart)), 2);
}

void SinglePassTest::aConnectionThatEndedMeanwhileIsReplaced_data()
{
    addSchemes();
}

void SinglePassTest::aConnectionThatEndedMeanwhileIsReplaced()
{
    QFETCH(bool, isSecure);
    const auto server = newServer(isSecure);
    support::ServiceBench bench(*server, singlePassWindowMaker());
    QVERIFY(bench.prepare(Call::CreateInstance));
    server->closeIdleConnections();

    // By the time that another service has answered, the client has seen the end of that connection, too.
    ScriptedServer another;
    another.reply(callPath(Call::Instances), Reply::json(200, "{}"));
    bench.view().line(u"Tarnwick URL")->setText(another.origin());
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(bench.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    bench.view().line(u"Tarnwick URL")->setText(server->origin());

    bench.bringAbout(Call::CreateInstance);
    QTRY_COMPARE(bench.view().line(u"GDPS Name")->text(), QString());
    QTRY_COMPARE(bench.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(server->count(callPath(Call::CreateInstance)), 1);
}

void SinglePassTest::aConnectionThatEndsUnderThePressBringsAtMostOneCreation_data()
{
    addSchemes();
}

void SinglePassTest::aConnectionThatEndsUnderThePressBringsAtMostOneCreation()
{
    QFETCH(bool, isSecure);
    const auto server = newServer(isSecure);
    support::ServiceBench bench(*server, singlePassWindowMaker());
    QVERIFY(bench.prepare(Call::CreateInstance));
    // The service ends the idle connection in the very moment of the press. Whether the request still gets
    // through is a matter of luck; that it is not there twice, and that the form tells which, is not.
    server->closeIdleConnections();
    bench.bringAbout(Call::CreateInstance);
    QTRY_VERIFY(bench.view().button(u"Create GDPS")->isEnabled());
    const qsizetype arrived = server->count(callPath(Call::CreateInstance));
    QVERIFY(arrived <= 1);
    QCOMPARE(bench.view().line(u"GDPS Name")->text(), arrived == 1 ? QString() : u"Neon Burst"_s);

    server->reply(callPath(Call::Instances), Reply::json(200, "{}"));
    QTRY_VERIFY(bench.view().button(u"Refresh")->isEnabled());
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(bench.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(server->count(callPath(Call::CreateInstance)), arrived);
}

void SinglePassTest::aRefusedConnectionSendsNothingLater()
{
    ScriptedServer server;
    support::ServiceBench bench(server, singlePassWindowMaker());
    QVERIFY(bench.prepare(Call::CreateInstance));
    support::fillCreationForm(bench.view());
    const QStringList formBefore = singlePassForm(bench.view());
    server.stop();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    bench.bringAbout(Call::CreateInstance);
    QTRY_VERIFY(bench.view().button(u"Create GDPS")->isEnabled());
    QCOMPARE(singlePassForm(bench.view()), formBefore);

    server.restart();
    server.reply(callPath(Call::Instances), Reply::json(200, "{}"));
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(bench.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(server.count(callPath(Call::CreateInstance)), 0);
}

QTEST_MAIN(SinglePassTest)
#include "single_pass_test.moc"
