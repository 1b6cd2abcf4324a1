// A redirect must not carry the token, or anything else, to another origin.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/tls_material.h"
#include "support/trusted_ca.h"
#include "support/wait_for.h"

#include <QNetworkReply>
#include <QTest>

#include <array>
#include <memory>
#include <optional>

using support::Call;
using support::RecordedRequest;
using support::Reply;
using support::ScriptedServer;

class RedirectsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void anotherOriginIsNotAsked_data();
    void anotherOriginIsNotAsked();
    void aRedirectsBodyIsNotRead();
    void theSameOriginIsFollowed_data();
    void theSameOriginIsFollowed();
    void aPostThatWouldHaveToBeSentAgainIsNot_data();
    void aPostThatWouldHaveToBeSentAgainIsNot();
    void aChainThatLeavesTheOriginEndsThere();
    void whatIsNoRedirectIsNotFollowed_data();
    void whatIsNoRedirectIsNotFollowed();

private:
    std::unique_ptr<support::TlsMaterial> material;
    support::TlsIdentity identity;
    std::optional<support::TrustedCa> trust;
    std::unique_ptr<support::MessageCatcher> messages;
};

namespace {

constexpr std::array redirectStatuses = {301, 302, 303, 307, 308};

auto redirectWindowMaker()
{
    return [] {
        return std::make_unique<TarnwickClientWindow>();
    };
}

} // namespace

void RedirectsTest::initTestCase()
{
    material = std::make_unique<support::TlsMaterial>();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    identity = material->good();
    QVERIFY2(material->isUsable(), qPrintable(material->errorText()));
    trust.emplace(material->authority());
}

void RedirectsTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void RedirectsTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void RedirectsTest::anotherOriginIsNotAsked_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("destination");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        for (const int status : redirectStatuses) {
            for (const char* destination :
                 {"port", "host", "host, without a scheme", "https from http", "http from https"}) {
                QTest::addRow("%s, %d, another %s", support::callName(call), status, destination)
                    << call << status << QString::fromLatin1(destination);
            }
        }
    }
}

void RedirectsTest::anotherOriginIsNotAsked()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QString, destination);
    const bool isSecure = destination == u"http from https"_s;
    const auto server = isSecure ? std::make_unique<ScriptedServer>(identity) : std::make_unique<ScriptedServer>();
    const auto another = destination == u"https from http"_s ? std::make_unique<ScriptedServer>(identity)
                                                             : std::make_unique<ScriptedServer>();
    another->onRequest([](const RecordedRequest&) { return Reply::json(200, R"({"message":"Got it"})"); });
    server->onRequest("/elsewhere", [](const RecordedRequest&) { return Reply::json(200, R"({"message":"Got it"})"); });
    QString elsewhere =
        (destination.startsWith(u"host"_s) ? server->origin(u"localhost"_s) : another->origin()) + u"/elsewhere"_s;
    if (destination == u"host, without a scheme"_s) {
        elsewhere.remove(0, u"http:"_s.size());
    }

    support::ServiceBench bench(*server, redirectWindowMaker());
    QVERIFY(bench.prepare(call));
    server->reply(callPath(call), Reply::redirect(status, elsewhere.toUtf8()));
    server->forgetRequests();
    bench.bringAbout(call);
    QTRY_COMPARE(bench.view().status(), u"Insecure redirect"_s);
    QCOMPARE(server->count(), 1);

    // Whatever had been sent before this request would be here by now.
    server->reply(callPath(Call::LinkStart), Reply::empty(500));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(another->connectionCount(), 0);
    QCOMPARE(server->count("/elsewhere"), 0);
}

void RedirectsTest::aRedirectsBodyIsNotRead()
{
    ScriptedServer server;
    const ScriptedServer another;
    support::ServiceBench bench(server, redirectWindowMaker());
    QVERIFY(bench.prepare(Call::Instances));
    const QByteArray location = another.origin().toUtf8() + "/elsewhere";
    server.reply(callPath(Call::Instances),
                 Reply::json(302, R"({"error":"The service has moved."})").header("Location", location));
    bench.bringAbout(Call::Instances);
    // Qt drops a redirect's body as it comes, and judges the target only at its end.
    QTRY_COMPARE(bench.view().status(), u"Insecure redirect"_s);
    QCOMPARE(another.connectionCount(), 0);
}

void RedirectsTest::theSameOriginIsFollowed_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("isAbsolute");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
        for (const int status : redirectStatuses) {
            if (isPost && status >= 307) {
                continue; // has a test of its own
            }
            QTest::addRow("%s, %d", support::callName(call), status) << call << status << true;
            QTest::addRow("%s, %d, path only", support::callName(call), status) << call << status << false;
        }
    }
}

void RedirectsTest::theSameOriginIsFollowed()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(bool, isAbsolute);
    ScriptedServer server;
    support::ServiceBench bench(server, redirectWindowMaker());
    QVERIFY(bench.prepare(call));
    const QByteArray location = (isAbsolute ? server.origin().toUtf8() : QByteArray()) + "/moved/here?x=1";
    server.reply(callPath(call), Reply::redirect(status, location));
    server.reply("/moved/here", Reply::json(500, R"({"message":"You found it"})"));
    server.forgetRequests();
    bench.bringAbout(call);
    // The target's answer counts, as if it had been asked in the first place.
    QTRY_COMPARE(bench.view().status(), u"You found it"_s);
    QCOMPARE(server.count(), 2);
    const RecordedRequest followed = server.requests().constLast();
    QCOMPARE(followed.method, "GET");
    QCOMPARE(followed.target, "/moved/here?x=1");
    QCOMPARE(followed.body, QByteArray());
    QCOMPARE(followed.header("Accept"), "application/json");
    QCOMPARE(followed.header("User-Agent"), "Tarnwick-QtClient/1.0");
    QCOMPARE(followed.header("Authorization"), server.requests().constFirst().header("Authorization"));
}

void RedirectsTest::aPostThatWouldHaveToBeSentAgainIsNot_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    for (const Call call : {Call::LinkStart, Call::CreateInstance}) {
        for (const int status : {307, 308}) {
            QTest::addRow("%s, %d", support::callName(call), status) << call << status;
        }
    }
}

void RedirectsTest::aPostThatWouldHaveToBeSentAgainIsNot()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    ScriptedServer server;
    support::ServiceBench bench(server, redirectWindowMaker());
    QVERIFY(bench.prepare(call));
    server.reply(callPath(call), Reply::redirect(status, "/moved"));
    server.reply("/moved", Reply::json(500, R"({"message":"You found it"})"));
    server.forgetRequests();
    const QString underWay = bench.view().status();
    bench.bringAbout(call);
    const QString button = call == Call::LinkStart ? u"Generate Link Code"_s : u"Create GDPS"_s;
    QTRY_VERIFY(bench.view().button(button)->isEnabled());
    QVERIFY(!bench.view().status().isEmpty());
    QVERIFY(bench.view().status() != underWay);
    QVERIFY(!bench.view().status().startsWith("Code "_L1));
    QVERIFY(bench.view().status() != u"You found it"_s);
    QCOMPARE(bench.view().line(u"GDPS Name")->text(), call == Call::LinkStart ? QString() : u"Neon Burst"_s);

    bench.startUnlinked();
    server.reply(callPath(Call::LinkStart), Reply::empty(500));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(server.count(), 2);
    QCOMPARE(server.count("/moved"), 0);
}

void RedirectsTest::aChainThatLeavesTheOriginEndsThere()
{
    ScriptedServer server;
    const ScriptedServer another;
    support::ServiceBench bench(server, redirectWindowMaker());
    QVERIFY(bench.prepare(Call::Instances));
    server.reply(callPath(Call::Instances), Reply::redirect(302, "/first"));
    server.reply("/first", Reply::redirect(302, "/second"));
    server.reply("/second", Reply::redirect(302, another.origin().toUtf8() + "/third"));
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(bench.view().status(), u"Insecure redirect"_s);
    QCOMPARE(server.count("/second"), 1);
    QCOMPARE(another.connectionCount(), 0);
}

void RedirectsTest::whatIsNoRedirectIsNotFollowed_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("isSameOrigin");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        for (const int status : {200, 201, 202, 300, 304, 305, 306, 500}) {
            QTest::addRow("%s, %d, another origin", support::callName(call), status) << call << status << false;
            if (status != 305) {
                QTest::addRow("%s, %d, the same origin", support::callName(call), status) << call << status << true;
            }
        }
    }
}

/// Other replies may name a location, too.
void RedirectsTest::whatIsNoRedirectIsNotFollowed()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(bool, isSameOrigin);
    ScriptedServer server;
    const ScriptedServer another;
    support::ServiceBench bench(server, redirectWindowMaker());
    QVERIFY(bench.prepare(call));
    const QByteArray location = (isSameOrigin ? server : another).origin().toUtf8() + "/elsewhere";
    server.reply(callPath(call), Reply::json(status, "{}").header("Location", location));
    server.forgetRequests();
    bench.bringAbout(call);
    QVERIFY(support::waitFor([&bench] { return bench.window().findChild<QNetworkReply*>() == nullptr; }));
    // Qt takes a 305 for a redirect all the same, and ends there.
    QCOMPARE(bench.view().status() == u"Insecure redirect"_s, status == 305);
    QCOMPARE(server.count(callPath(call)), 1);
    QCOMPARE(server.count("/elsewhere"), 0);
    QCOMPARE(another.connectionCount(), 0);
}

QTEST_MAIN(RedirectsTest)
#include "redirects_test.moc"
