// What counts as a success, whatever the body says.
#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplySuccessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void statusesBelow400AreSuccesses_data();
    void statusesBelow400AreSuccesses();
    void acceptedIsASuccessOfEveryKind_data();
    void acceptedIsASuccessOfEveryKind();
    void acceptedHidesATransferError_data();
    void acceptedHidesATransferError();
    void aBodyThatIsNoObjectIsAnEmptyObject_data();
    void aBodyThatIsNoObjectIsAnEmptyObject();

private:
    /// Gives the call that reply and compares what the status line says next. The list that follows some of the
    /// successes is held back, for its reply would set the line again.
    void compareOutcome(Call call, const Reply& reply, const QString& status);

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

QString readyText(const QString& code)
{
    return u"Code "_s + code + u" is ready. Approve it at "_s + publicHost() + u"/link/pc before it expires."_s;
}

/// The success texts of the kinds for a reply without any of the fields that they look for.
QString bareSuccessText(Call call)
{
    switch (call) {
    case Call::LinkStart:
        return readyText({});
    case Call::LinkPoll:
        return u"Tarnwick desktop client linked."_s;
    case Call::Session:
        return u"Tarnwick desktop session ready."_s;
    case Call::Instances:
        return u"Loaded 0 Tarnwick project(s)."_s;
    case Call::CreateInstance:
        return u"Tarnwick created your GDPS from the desktop client."_s;
    }
    return {};
}

} // namespace

void ReplySuccessTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void ReplySuccessTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void ReplySuccessTest::compareOutcome(Call call, const Reply& reply, const QString& status)
{
    QVERIFY(bench->prepare(call));
    if (call == Call::Session || call == Call::CreateInstance) {
        server->hold(callPath(Call::Instances));
    }
    server->reply(callPath(call), reply);
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), status);
    if (call == Call::Session || call == Call::CreateInstance) {
        QTRY_COMPARE(server->heldCount(callPath(Call::Instances)), 1);
        server->reply(callPath(Call::Instances), Reply::json(200, "{}"));
        server->release(callPath(Call::Instances));
        QTRY_COMPARE(bench->view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    }
}

void ReplySuccessTest::statusesBelow400AreSuccesses_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    const QByteArray body = R"({"message":"Not shown","error":"Nor this","instances":[{},{}]})";
    for (const int status : {200, 201, 203, 206, 226, 299, 300, 306, 399}) {
        QTest::addRow("%d", status) << status << body;
    }
    QTest::newRow("204, no body") << 204 << QByteArray();
    QTest::newRow("304, no body") << 304 << QByteArray();
}

void ReplySuccessTest::statusesBelow400AreSuccesses()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    compareOutcome(Call::Instances, body.isEmpty() ? Reply::empty(status) : Reply::json(status, body),
                   body.isEmpty() ? u"Loaded 0 Tarnwick project(s)."_s : u"Loaded 2 Tarnwick project(s)."_s);
}

void ReplySuccessTest::acceptedIsASuccessOfEveryKind_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("status");
    const QString waiting = u"Waiting for approval at "_s + publicHost() + u"/link/pc."_s;
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        const QString status = call == Call::LinkPoll ? waiting : bareSuccessText(call);
        QTest::addRow("%s, nothing", name) << call << QByteArray() << status;
        QTest::addRow("%s, error", name) << call << QByteArray(R"({"error":"Not shown"})") << status;
    }
    const QByteArray message = R"({"message":"A message","error":"Not shown"})";
    QTest::newRow("link start, message") << Call::LinkStart << message << readyText({});
    QTest::newRow("link poll, message") << Call::LinkPoll << message << u"A message"_s;
    QTest::newRow("session, message") << Call::Session << message << u"Tarnwick desktop session ready."_s;
    QTest::newRow("instances, message") << Call::Instances << message << u"Loaded 0 Tarnwick project(s)."_s;
    QTest::newRow("create, message") << Call::CreateInstance << message << u"A message"_s;
}

void ReplySuccessTest::acceptedIsASuccessOfEveryKind()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, body);
    QFETCH(QString, status);
    compareOutcome(call, Reply::json(202, body), status);
}

void ReplySuccessTest::acceptedHidesATransferError_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("status");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call))
            << call
            << (call == Call::LinkPoll ? u"Waiting for approval at "_s + publicHost() + u"/link/pc."_s
                                       : bareSuccessText(call));
    }
}

void ReplySuccessTest::acceptedHidesATransferError()
{
    QFETCH(Call, call);
    QFETCH(QString, status);
    compareOutcome(call, Reply::json(202, R"({"error":"Not shown"})").cutBodyAfter(10), status);
}

void ReplySuccessTest::aBodyThatIsNoObjectIsAnEmptyObject_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("body");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        QTest::addRow("%s, nothing", name) << call << QByteArray();
        QTest::addRow("%s, HTML", name) << call << QByteArray("<h1>Welcome</h1>");
        QTest::addRow("%s, array", name) << call
                                         << QByteArray(
                                                R"([{"message":"x","code":"X","access_token":"t","instances":[{}]}])");
        QTest::addRow("%s, cut object", name) << call << QByteArray(R"({"message":"x","code":"X")");
        QTest::addRow("%s, wrong types", name)
            << call
            << QByteArray(R"({"message":1,"error":[],"code":2,"approve_url":{},"access_token":3,"user":[],)"
                          R"("available_cores":{},"instances":"x"})");
    }
}

void ReplySuccessTest::aBodyThatIsNoObjectIsAnEmptyObject()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, body);
    compareOutcome(call, Reply::json(200, body), bareSuccessText(call));
    if (call == Call::LinkStart) {
        QCOMPARE(bench->view().line(u"Link code")->text(), QString());
    } else if (call == Call::LinkPoll) {
        QVERIFY(!bench->view().button(u"Refresh")->isEnabled());
    } else if (call == Call::Session) {
        QCOMPARE(bench->view().account(),
                 (QStringList{u"Signed in as Tarnwick user"_s, u"Plan: Free"_s, u"Limit: -"_s}));
        QCOMPARE(bench->view().combo(u"Core")->currentText(), u"No cores available"_s);
    }
}

QTEST_MAIN(ReplySuccessTest)
#include "reply_success_test.moc"
