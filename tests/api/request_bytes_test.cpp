// The five requests, as the service gets them.
#include "app/tarnwick_client_window.h"

#include "api/request_limits.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTest>

#include <memory>

using support::Call;
using support::RecordedRequest;

// Long enough for a slow line, short enough for an impatient person.
static_assert(requestTimeoutMs == 20000);

class RequestBytesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyCallHasItsMethodTargetAndBody_data();
    void everyCallHasItsMethodTargetAndBody();
    void everyCallHasTheFixedHeaders_data();
    void everyCallHasTheFixedHeaders();
    void onlyPostsAreForms_data();
    void onlyPostsAreForms();
    void theTokenGoesOnlyWhereItBelongs_data();
    void theTokenGoesOnlyWhereItBelongs();
    void pairingIsAnonymousEvenWhileLinked();
    void theTokenIsSentAsUtf8();
    void thePollsQueryIsEncoded();
    void everyRequestIsTaggedAndLimited_data();
    void everyRequestIsTaggedAndLimited();

private:
    /// Causes the call and waits until it has come in.
    bool send(Call call);
    RecordedRequest sent(Call call) const { return server->requests(callPath(call)).constLast(); }

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

void addEveryCall()
{
    QTest::addColumn<Call>("call");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call;
    }
}

QList<QByteArray> headerValues(const RecordedRequest& request, QByteArrayView name)
{
    QList<QByteArray> values;
    for (const RecordedRequest::Header& header : request.headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
            values.append(header.second);
        }
    }
    return values;
}

} // namespace

void RequestBytesTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<support::ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void RequestBytesTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

bool RequestBytesTest::send(Call call)
{
    if (!bench->prepare(call)) {
        return false;
    }
    server->hold(callPath(call));
    server->forgetRequests();
    bench->bringAbout(call);
    return QTest::qWaitFor([this, call] { return server->heldCount(callPath(call)) == 1; });
}

void RequestBytesTest::everyCallHasItsMethodTargetAndBody_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("link start") << Call::LinkStart << QByteArray("POST /api/pc/link/start HTTP/1.1\r\n")
                                << QByteArray("device_id=desk-1");
    QTest::newRow("link poll") << Call::LinkPoll
                               << QByteArray("GET /api/pc/link/poll?code=TWPC-TEST01&device_id=desk-1 HTTP/1.1\r\n")
                               << QByteArray();
    QTest::newRow("session") << Call::Session << QByteArray("GET /api/pc/me HTTP/1.1\r\n") << QByteArray();
    QTest::newRow("instances") << Call::Instances << QByteArray("GET /api/pc/instances HTTP/1.1\r\n") << QByteArray();
    QTest::newRow("create") << Call::CreateInstance << QByteArray("POST /api/pc/instances/create HTTP/1.1\r\n")
                            << QByteArray("display_name=Neon%20Burst&description=&emoji_badge=%F0%9F%94%A5"
                                          "&accent_color=%23ff8f1f&tags=&preset_name=balanced"
                                          "&core_key=core-a&public_listing=true");
}

void RequestBytesTest::everyCallHasItsMethodTargetAndBody()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, body);
    QVERIFY(send(call));
    const RecordedRequest request = sent(call);
    QCOMPARE(request.raw.first(request.raw.indexOf('\n') + 1), line);
    QCOMPARE(request.body, body);
    QCOMPARE(request.header("Host"), "127.0.0.1:" + QByteArray::number(server->port()));
    QCOMPARE(server->count(), 1);
}

void RequestBytesTest::everyCallHasTheFixedHeaders_data()
{
    addEveryCall();
}

void RequestBytesTest::everyCallHasTheFixedHeaders()
{
    QFETCH(Call, call);
    QVERIFY(send(call));
    QCOMPARE(headerValues(sent(call), "Accept"), QList<QByteArray>{"application/json"});
    QCOMPARE(headerValues(sent(call), "User-Agent"), QList<QByteArray>{"Tarnwick-QtClient/1.0"});
    QVERIFY(!sent(call).hasHeader("Cookie"));
    QVERIFY(!sent(call).hasHeader("Referer"));
}

void RequestBytesTest::onlyPostsAreForms_data()
{
    addEveryCall();
}

void RequestBytesTest::onlyPostsAreForms()
{
    QFETCH(Call, call);
    QVERIFY(send(call));
    const RecordedRequest request = sent(call);
    const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
    QCOMPARE(headerValues(request, "Content-Type"),
             isPost ? QList<QByteArray>{"application/x-www-form-urlencoded"} : QList<QByteArray>());
    QCOMPARE(headerValues(request, "Content-Length"),
             isPost ? QList<QByteArray>{QByteArray::number(request.body.size())} : QList<QByteArray>());
    QVERIFY(!request.hasHeader("Transfer-Encoding"));
}

void RequestBytesTest::theTokenGoesOnlyWhereItBelongs_data()
{
    addEveryCall();
}

void RequestBytesTest::theTokenGoesOnlyWhereItBelongs()
{
    QFETCH(Call, call);
    QVERIFY(send(call));
    const bool isPairing = call == Call::LinkStart || call == Call::LinkPoll;
    QCOMPARE(headerValues(sent(call), "Authorization"),
             isPairing ? QList<QByteArray>() : QList<QByteArray>{"Bearer token-1"});
}

void RequestBytesTest::pairingIsAnonymousEvenWhileLinked()
{
    QVERIFY(bench->settleLinked());
    bench->bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench->view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    server->hold(callPath(Call::LinkPoll));
    bench->bringAbout(Call::LinkPoll);
    QTRY_COMPARE(server->heldCount(callPath(Call::LinkPoll)), 1);
    QVERIFY(!sent(Call::LinkStart).hasHeader("Authorization"));
    QVERIFY(!sent(Call::LinkPoll).hasHeader("Authorization"));
    QVERIFY(!sent(Call::LinkStart).raw.contains("token-1"));
    QVERIFY(!sent(Call::LinkPoll).raw.contains("token-1"));
}

void RequestBytesTest::theTokenIsSentAsUtf8()
{
    bench->home().writeState(support::storedState(server->origin(), u"tökén 🔑 a+b=="_s));
    server->hold(callPath(Call::Session));
    const TarnwickClientWindow window;
    QTRY_COMPARE(server->heldCount(callPath(Call::Session)), 1);
    QCOMPARE(sent(Call::Session).header("Authorization"), "Bearer tökén 🔑 a+b==");
}

void RequestBytesTest::thePollsQueryIsEncoded()
{
    bench->home().writeState(support::storedState(server->origin(), {}, u"my desk+ä&x=1"_s));
    server->reply(callPath(Call::LinkStart), support::Reply::json(200, R"({"code":"A b+%41#/?"})"));
    TarnwickClientWindow window;
    const support::WindowView view(window);
    view.button(u"Generate Link Code")->click();
    // The poll comes by itself.
    QTRY_COMPARE_WITH_TIMEOUT(server->count(callPath(Call::LinkPoll)), 1, 20000);
    QCOMPARE(sent(Call::LinkStart).body, "device_id=my%20desk+%C3%A4%26x%3D1");
    QCOMPARE(sent(Call::LinkPoll).query(), "code=A%20b+A%23/?&device_id=my%20desk+%C3%A4%26x%3D1");
}

void RequestBytesTest::everyRequestIsTaggedAndLimited_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("kind");
    QTest::newRow("link start") << Call::LinkStart << 0;
    QTest::newRow("link poll") << Call::LinkPoll << 1;
    QTest::newRow("session") << Call::Session << 2;
    QTest::newRow("instances") << Call::Instances << 3;
    QTest::newRow("create") << Call::CreateInstance << 4;
}

void RequestBytesTest::everyRequestIsTaggedAndLimited()
{
    QFETCH(Call, call);
    QFETCH(int, kind);
    QVERIFY(send(call));
    // Earlier replies have gone: what is left is the one in flight.
    QTRY_COMPARE(bench->window().findChildren<QNetworkReply*>().size(), 1);
    const QNetworkReply* reply = bench->window().findChild<QNetworkReply*>();
    QCOMPARE(reply->property("taskKind").typeId(), QMetaType::Int);
    QCOMPARE(reply->property("taskKind").toInt(), kind);
    QCOMPARE(reply->request().transferTimeout(), 20000);
}

QTEST_MAIN(RequestBytesTest)
#include "request_bytes_test.moc"
