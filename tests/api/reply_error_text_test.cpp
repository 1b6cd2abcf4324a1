// The one rule that makes an error text of a reply.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplyErrorTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void everyErrorStatusFollowsTheRule_data();
    void everyErrorStatusFollowsTheRule();
    void everyKindFollowsTheRule_data();
    void everyKindFollowsTheRule();
    void onlyAFailedSessionCheckSignsOut_data();
    void onlyAFailedSessionCheckSignsOut();
    void textsAreShownAsTheyWereSent_data();
    void textsAreShownAsTheyWereSent();
    void theContentTypeDoesNotMatter_data();
    void theContentTypeDoesNotMatter();

private:
    /// Presses "Refresh" and gives the status line after the reply.
    QString statusAfterRefresh(const Reply& reply);

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

struct ErrorBody
{
    const char* name;
    QByteArray body;
    /// Null where the status alone makes the text.
    QString text;
};

QList<ErrorBody> errorBodies()
{
    return {
        {"nothing", "", {}},
        {"HTML", "<!DOCTYPE html><h1>Not Found</h1>", {}},
        {"plain text", "Not Found", {}},
        {"empty object", "{}", {}},
        {"message", R"({"message":"Maintenance"})", u"Maintenance"_s},
        {"error", R"({"error":"Bad name"})", u"Bad name"_s},
        {"both", R"({"error":"Bad name","message":"Maintenance"})", u"Maintenance"_s},
        {"empty message and error", R"({"message":"","error":"Bad name"})", u"Bad name"_s},
        {"both empty", R"({"message":"","error":""})", {}},
        {"blank message", R"({"message":" ","error":"Bad name"})", u" "_s},
        {"message is a number", R"({"message":42,"error":"Bad name"})", u"Bad name"_s},
        {"message is an object", R"({"message":{"text":"x"},"error":"Bad name"})", u"Bad name"_s},
        {"neither is a text", R"({"message":null,"error":["Bad name"]})", {}},
        {"array of objects", R"([{"message":"Maintenance"}])", {}},
        {"text", R"("Maintenance")", {}},
        {"cut object", R"({"message":"Maintenance")", {}},
        {"object and more", R"({"message":"Maintenance"} x)", {}},
        {"message further in", R"({"data":{"message":"Maintenance"}})", {}},
        {"other letter case", R"({"Message":"Maintenance","ERROR":"Bad name"})", {}},
        {"bad UTF-8", "{\"message\":\"\xff\"}", {}},
    };
}

} // namespace

void ReplyErrorTextTest::initTestCase()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void ReplyErrorTextTest::init()
{
    messages->clear();
    // A failed list leaves everything as it is, so one window serves a whole table.
    if (!server) {
        server = std::make_unique<ScriptedServer>();
        bench =
            std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
        QVERIFY(bench->settleLinked());
    }
}

void ReplyErrorTextTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
}

void ReplyErrorTextTest::cleanupTestCase()
{
    bench.reset();
    server.reset();
    messages.reset();
}

QString ReplyErrorTextTest::statusAfterRefresh(const Reply& reply)
{
    server->reply(callPath(Call::Instances), reply);
    bench->bringAbout(Call::Instances);
    if (bench->view().status() != u"Refreshing your Tarnwick projects..."_s) {
        return u"not sent"_s;
    }
    const bool isHandled = QTest::qWaitFor([this] { return bench->view().button(u"Refresh")->isEnabled(); });
    return isHandled ? bench->view().status() : u"not answered"_s;
}

void ReplyErrorTextTest::everyErrorStatusFollowsTheRule_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const auto bodies = errorBodies();
    for (const int status : {400, 401, 403, 404, 409, 410, 418, 422, 429, 499, 500, 502, 503, 504, 599, 999}) {
        for (const ErrorBody& body : bodies) {
            QTest::addRow("%d, %s", status, body.name)
                << status << body.body
                << (body.text.isNull() ? u"Tarnwick returned HTTP %1."_s.arg(status) : body.text);
        }
    }
}

void ReplyErrorTextTest::everyErrorStatusFollowsTheRule()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    QCOMPARE(statusAfterRefresh(Reply::json(status, body)), text);
    // A failed list leaves the shown one alone.
    QCOMPARE(bench->view().row(0).constFirst(), u"Neon"_s);
    QCOMPARE(bench->view().account().constFirst(), u"Signed in as Ann"_s);
}

void ReplyErrorTextTest::everyKindFollowsTheRule_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        QTest::addRow("%s, message", name)
            << call << 500 << QByteArray(R"({"message":"Maintenance"})") << u"Maintenance"_s;
        QTest::addRow("%s, HTML", name) << call << 404 << QByteArray("<h1>Not Found</h1>")
                                        << u"Tarnwick returned HTTP 404."_s;
        QTest::addRow("%s, error", name) << call << 422 << QByteArray(R"({"message":"","error":"Bad name"})")
                                         << u"Bad name"_s;
        QTest::addRow("%s, nothing", name) << call << 401 << QByteArray() << u"Tarnwick returned HTTP 401."_s;
    }
}

void ReplyErrorTextTest::everyKindFollowsTheRule()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    ScriptedServer ownServer;
    support::ServiceBench own(ownServer, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(own.prepare(call));
    ownServer.reply(callPath(call), Reply::json(status, body));
    own.bringAbout(call);
    QTRY_COMPARE(own.view().status(), text);
}

void ReplyErrorTextTest::onlyAFailedSessionCheckSignsOut_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        for (const int status : {401, 403, 500}) {
            QTest::addRow("%s, %d", support::callName(call), status) << call << status;
        }
    }
}

void ReplyErrorTextTest::onlyAFailedSessionCheckSignsOut()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    ScriptedServer ownServer;
    support::ServiceBench own(ownServer, [] { return std::make_unique<TarnwickClientWindow>(); });
    if (call != Call::Session) {
        QVERIFY(own.settleLinked());
    }
    if (call == Call::LinkPoll) {
        own.bringAbout(Call::LinkStart);
        QTRY_COMPARE(own.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    } else if (call == Call::CreateInstance) {
        own.view().line(u"GDPS Name")->setText(u"Neon Burst"_s);
    }
    ownServer.reply(callPath(call), Reply::empty(status));
    own.bringAbout(call);
    QTRY_COMPARE(own.view().status(), u"Tarnwick returned HTTP %1."_s.arg(status));

    const bool staysLinked = call != Call::Session;
    QCOMPARE(own.view().button(u"Refresh")->isEnabled(), staysLinked);
    QCOMPARE(own.view().button(u"Unlink")->isEnabled(), staysLinked);
    QCOMPARE(own.view().account().constFirst(), staysLinked ? u"Signed in as Ann"_s : u"Not linked yet"_s);
    own.window().close();
    QCOMPARE(own.home().stateObject().contains(u"access_token"_s), staysLinked);
}

void ReplyErrorTextTest::textsAreShownAsTheyWereSent_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("percent signs") << u"100%1 of %2 used: %L3 %%"_s;
    QTest::newRow("markup") << u"<b>Bold</b> &amp; <img src=x>"_s;
    QTest::newRow("every script") << u"größe שלום 日本 🔥"_s;
    QTest::newRow("lines") << u"one\ntwo\r\n\tthree"_s;
    QTest::newRow("blanks around it") << u"  kept  "_s;
    QTest::newRow("very long") << u"0123456789"_s.repeated(2000);
}

void ReplyErrorTextTest::textsAreShownAsTheyWereSent()
{
    QFETCH(QString, text);
    QCOMPARE(statusAfterRefresh(Reply::json(503, QJsonObject{{u"message"_s, text}})), text);
    QCOMPARE(statusAfterRefresh(Reply::json(503, QJsonObject{{u"error"_s, text}})), text);
}

void ReplyErrorTextTest::theContentTypeDoesNotMatter_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("text") << QByteArray("text/plain");
    QTest::newRow("HTML") << QByteArray("text/html; charset=latin1");
    QTest::newRow("problem") << QByteArray("application/problem+json");
    QTest::newRow("nonsense") << QByteArray("!");
}

void ReplyErrorTextTest::theContentTypeDoesNotMatter()
{
    QFETCH(QByteArray, type);
    const Reply reply = Reply::json(500, R"({"message":"Größe"})").header("Content-Type", type);
    QCOMPARE(statusAfterRefresh(reply), u"Größe"_s);
}

QTEST_MAIN(ReplyErrorTextTest)
#include "reply_error_text_test.moc"
