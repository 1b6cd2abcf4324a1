// A service may speak HTTP/2. What holds for HTTP/1.1 holds for it: one press is one request, and no reply may take
// the memory of the machine.
#include "app/tarnwick_client_window.h"

#include "api/http2_service.h"
#include "api/request_limits.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/system_memory.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"
#include "support/wait_for.h"

#include <QTest>

#include <memory>
#include <optional>

using support::Call;

class Http2Test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void anAnswerCountsAsOverTheOtherProtocol();
    void aBodyOverTheBoundIsGivenUp_data();
    void aBodyOverTheBoundIsGivenUp();
    void aBodyOfExactlyTheBoundIsRead();
    void aCreationArrivesOnce_data();
    void aCreationArrivesOnce();

private:
    bool prepare(Call call);
    bool linksAnew();

    std::unique_ptr<support::TlsMaterial> material;
    support::TlsIdentity identity;
    std::optional<support::TrustedCa> trust;
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
    std::unique_ptr<Http2Service> service;
};

namespace {

constexpr qint64 http2Mebibyte = 1024LL * 1024;
// A body over the bound is given up within seconds, on a busy machine too.
constexpr int http2PatienceMs = 30000;

} // namespace

void Http2Test::initTestCase()
{
    // Nothing but the bound can end a reply within the time that this test waits for it.
    QVERIFY(requestTimeoutMs > http2PatienceMs);
    material = std::make_unique<support::TlsMaterial>();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    identity = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust.emplace(material->authority());
    // For all of the tests: Qt's network thread may have something to say about one after its end.
    messages = std::make_unique<support::MessageCatcher>();
}

void Http2Test::init()
{
    messages->clear();
    server = std::make_unique<support::ScriptedServer>();
    service = std::make_unique<Http2Service>(identity);
}

void Http2Test::cleanup()
{
    bench.reset();
    service.reset();
    server.reset();
    const QList<support::CaughtMessage> entries = messages->entries();
    for (const support::CaughtMessage& entry : entries) {
        // Qt names every broken stream there.
        QVERIFY2(entry.category == u"qt.network.http2"_s, qPrintable(entry.text));
    }
}

void Http2Test::cleanupTestCase()
{
    const qint64 peak = support::peakMemoryBytes();
    if (peak == 0) {
        QSKIP("Nobody tells how much memory this process has had, or a sanitizer keeps what is freed.");
    }
    QVERIFY2(peak < 400 * http2Mebibyte, qPrintable(u"%1 MiB"_s.arg(peak / http2Mebibyte)));
}

/// Goes up to the point at which the call itself is to come: the first that goes to the service under test.
bool Http2Test::prepare(Call call)
{
    // The window of a session check has its base URL from the state file.
    const bool isSession = call == Call::Session;
    bench = std::make_unique<support::ServiceBench>(
        *server, [] { return std::make_unique<TarnwickClientWindow>(); }, isSession ? service->origin() : QString());
    if (!bench->prepare(call)) {
        return false;
    }
    if (!isSession) {
        bench->view().line(u"Tarnwick URL")->setText(service->origin());
    }
    return true;
}

/// Every call but the creation once more. One body has what each of them reads.
bool Http2Test::linksAnew()
{
    service->answerWith(R"({"code":"TWPC-TEST02","access_token":"token-2","instances":[{},{}]})");
    bench->bringAbout(Call::LinkStart);
    if (!support::waitFor([this] { return bench->view().line(u"Link code")->text() == u"TWPC-TEST02"_s; })) {
        return false;
    }
    bench->bringAbout(Call::LinkPoll);
    return support::waitFor([this] { return bench->view().status() == u"Loaded 2 Tarnwick project(s)."_s; });
}

void Http2Test::anAnswerCountsAsOverTheOtherProtocol()
{
    QVERIFY(prepare(Call::Instances));
    service->answerWith(R"({"instances":[{},{}]})");
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
    QCOMPARE(service->requestCount(), 1);
}

void Http2Test::aBodyOverTheBoundIsGivenUp_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("shown");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call << 200 << u"Operation canceled"_s;
    }
    // An error status stays that error.
    QTest::newRow("404") << Call::Instances << 404 << u"Tarnwick returned HTTP 404."_s;
    QTest::newRow("503") << Call::CreateInstance << 503 << u"Tarnwick returned HTTP 503."_s;
}

void Http2Test::aBodyOverTheBoundIsGivenUp()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QString, shown);
    QVERIFY(prepare(call));
    service->answerWith("0123456789abcdef", 1024 * http2Mebibyte, status);
    bench->bringAbout(call);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), shown, http2PatienceMs);
    QTRY_COMPARE(service->givenUpCount(), 1);
    QCOMPARE(service->requestCount(), 1);
    const bool isCreation = call == Call::CreateInstance;
    QCOMPARE(bench->view().table()->rowCount(), isCreation || call == Call::Instances ? 1 : 0);
    QCOMPARE(bench->view().line(u"GDPS Name")->text(), isCreation ? u"Neon Burst"_s : QString());

    // The kind is free for the next request.
    QVERIFY(linksAnew());
    if (isCreation) {
        bench->bringAbout(call);
        QTRY_COMPARE(bench->view().line(u"GDPS Name")->text(), QString());
    }
}

void Http2Test::aBodyOfExactlyTheBoundIsRead()
{
    QVERIFY(prepare(Call::Instances));
    QByteArray body = R"({"instances":[{},{},{}],"filler":")";
    body.append(QByteArray(requestMaxReplyBytes - body.size() - 2, 'x')).append("\"}");
    service->answerWith(body);
    body.clear();
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Loaded 3 Tarnwick project(s)."_s, http2PatienceMs);
}

void Http2Test::aCreationArrivesOnce_data()
{
    QTest::addColumn<Http2Service::Behaviour>("behaviour");
    QTest::newRow("connection closed") << Http2Service::Behaviour::Close;
    QTest::newRow("told to go away") << Http2Service::Behaviour::GoAway;
    QTest::newRow("request refused") << Http2Service::Behaviour::RefuseStream;
}

void Http2Test::aCreationArrivesOnce()
{
    QFETCH(Http2Service::Behaviour, behaviour);
    QVERIFY(prepare(Call::CreateInstance));
    service->behave(behaviour);
    bench->bringAbout(Call::CreateInstance);
    QTRY_VERIFY(bench->view().button(u"Create GDPS")->isEnabled());
    QVERIFY(!bench->view().status().isEmpty());
    QVERIFY(bench->view().status() != u"Creating your GDPS from the Tarnwick desktop client..."_s);
    QCOMPARE(bench->view().line(u"GDPS Name")->text(), u"Neon Burst"_s);

    service->behave(Http2Service::Behaviour::Answer);
    service->answerWith(R"({"instances":[{},{}]})");
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
    QCOMPARE(service->requestCount(), 2);
}

QTEST_MAIN(Http2Test)
#include "http2_test.moc"
