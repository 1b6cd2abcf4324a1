// Transfers that fail without an error status: the service's words if it got that far, the network library's if not.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/tls_material.h"

#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplyTransferErrorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aRefusedConnectionIsReportedInTheLibrarysWords_data();
    void aRefusedConnectionIsReportedInTheLibrarysWords();
    void aCutBodyIsReported_data();
    void aCutBodyIsReported();
    void aCutBodyOfAnErrorStatusFollowsTheStatus();
    void anEndWithoutAnswerIsReported_data();
    void anEndWithoutAnswerIsReported();
    void aCertificateThatNobodyTrustsIsReported();

private:
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

void addEveryKind()
{
    QTest::addColumn<Call>("call");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call;
    }
}

} // namespace

void ReplyTransferErrorTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void ReplyTransferErrorTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void ReplyTransferErrorTest::aRefusedConnectionIsReportedInTheLibrarysWords_data()
{
    addEveryKind();
}

void ReplyTransferErrorTest::aRefusedConnectionIsReportedInTheLibrarysWords()
{
    QFETCH(Call, call);
    QVERIFY(bench->prepare(call));
    server->stop();
    if (call != Call::Session && call != Call::LinkStart) {
        // A connection may still be open on the client's side. Another port has never had one.
        const ScriptedServer gone;
        const QString origin = gone.origin();
        bench->view().line(u"Tarnwick URL")->setText(origin);
    }
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), u"Connection refused"_s);
    QCOMPARE(bench->view().button(u"Refresh")->isEnabled(), call == Call::Instances || call == Call::CreateInstance);
    QVERIFY(bench->view().button(u"Generate Link Code")->isEnabled());
}

void ReplyTransferErrorTest::aCutBodyIsReported_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<QString>("status");
    const QString closed = u"Connection closed"_s;
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        // The body comes once the client is done with the head: Qt counts an answer that ends together with its
        // connection as one only if it was reading by then.
        const auto announced = [](const QByteArray& body) {
            return Reply::json(200, body).contentLength(1000).holdBody().thenClose();
        };
        QTest::addRow("%s, a blank", name) << call << announced(" ") << closed;
        QTest::addRow("%s, half an object", name) << call << announced(R"({"message":"Not sh)") << closed;
        QTest::addRow("%s, message", name) << call << announced(R"({"message":"A message"})") << u"A message"_s;
        QTest::addRow("%s, error", name) << call << announced(R"({"message":"","error":"An error"})") << u"An error"_s;
        QTest::addRow("%s, empty message", name) << call << announced(R"({"message":""})") << closed;
        QTest::addRow("%s, no text", name)
            << call << announced(R"({"code":"X","access_token":"t","instances":[]})") << closed;
    }
}

void ReplyTransferErrorTest::aCutBodyIsReported()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(QString, status);
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), reply);
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), status);
}

void ReplyTransferErrorTest::aCutBodyOfAnErrorStatusFollowsTheStatus()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->replies(callPath(Call::Instances),
                    {Reply::json(500, R"({"message":"A message"})").contentLength(1000).holdBody().thenClose(),
                     Reply::json(500, R"({"message":"A message"})").cutBodyAfter(12).holdBody()});
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"A message"_s);
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"Tarnwick returned HTTP 500."_s);
}

void ReplyTransferErrorTest::anEndWithoutAnswerIsReported_data()
{
    addEveryKind();
}

void ReplyTransferErrorTest::anEndWithoutAnswerIsReported()
{
    QFETCH(Call, call);
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), Reply::closeWithoutAnswer());
    const QString before = call == Call::Session ? QString() : bench->view().status();
    bench->bringAbout(call);
    // A request that may be sent again has another text than one that may not; neither is a made-up one.
    const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
    QTRY_COMPARE(bench->view().status(), isPost ? u"Unknown error"_s : u"Connection closed"_s);
    QVERIFY(bench->view().status() != before);
}

void ReplyTransferErrorTest::aCertificateThatNobodyTrustsIsReported()
{
    support::TlsMaterial material;
    QVERIFY2(material.isUsable(), qPrintable(material.errorText()));
    const ScriptedServer stranger(material.unknownAuthority());
    QVERIFY(bench->prepare(Call::Instances));
    bench->view().line(u"Tarnwick URL")->setText(stranger.origin());
    bench->bringAbout(Call::Instances);
    QTRY_VERIFY(bench->view().button(u"Refresh")->isEnabled());
    QVERIFY2(bench->view().status().contains("certificate"_L1), qPrintable(bench->view().status()));
    QCOMPARE(stranger.httpBytesReceived(), 0);
}

QTEST_MAIN(ReplyTransferErrorTest)
#include "reply_transfer_error_test.moc"
