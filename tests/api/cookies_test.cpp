// The token alone identifies this desktop. A cookie would do so behind its back, and outlive unlinking.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QNetworkAccessManager>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <memory>

using support::Call;
using support::RecordedRequest;
using support::Reply;
using support::ScriptedServer;

class CookiesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void noReplysCookieIsKept_data();
    void noReplysCookieIsKept();
    void aRedirectsCookieIsNotSentToItsTarget();
    void aCookieSomebodyElsePutThereIsNotSent();
    void twoAccountsOnOneWindowShareNothing();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

namespace {

Reply withCookies(const Reply& reply)
{
    return reply.setCookie("session=ann; Path=/; Max-Age=86400").setCookie("kept=for-good; HttpOnly");
}

bool anyRequestHasACookie(const ScriptedServer& server)
{
    const QList<RecordedRequest> requests = server.requests();
    return std::any_of(requests.cbegin(), requests.cend(),
                       [](const RecordedRequest& one) { return one.hasHeader("Cookie"); });
}

QNetworkCookieJar* cookieJarOf(const QWidget& window)
{
    return window.findChild<QNetworkAccessManager*>({}, Qt::FindDirectChildrenOnly)->cookieJar();
}

} // namespace

void CookiesTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void CookiesTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void CookiesTest::noReplysCookieIsKept_data()
{
    QTest::addColumn<Call>("call");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call;
    }
}

void CookiesTest::noReplysCookieIsKept()
{
    QFETCH(Call, call);
    ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(call));
    server.reply(callPath(call), withCookies(Reply::json(500, R"({"message":"With a cookie"})")));
    bench.bringAbout(call);
    QTRY_COMPARE(bench.view().status(), u"With a cookie"_s);
    QVERIFY(cookieJarOf(bench.window())->cookiesForUrl(QUrl(server.origin() + u"/api/pc/me"_s)).isEmpty());

    server.reply(callPath(Call::LinkStart), Reply::empty(500));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().status(), u"Tarnwick returned HTTP 500."_s);
    QVERIFY(!anyRequestHasACookie(server));
}

void CookiesTest::aRedirectsCookieIsNotSentToItsTarget()
{
    ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(Call::Instances));
    server.reply(callPath(Call::Instances), withCookies(Reply::redirect(302, "/moved")));
    server.reply("/moved", withCookies(Reply::json(200, "{}")));
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(bench.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(server.count("/moved"), 1);
    QVERIFY(!anyRequestHasACookie(server));
}

void CookiesTest::aCookieSomebodyElsePutThereIsNotSent()
{
    ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(Call::Instances));
    const QUrl url(server.origin());
    QVERIFY(cookieJarOf(bench.window())->setCookiesFromUrl({QNetworkCookie("left", "over")}, url));
    QCOMPARE(cookieJarOf(bench.window())->cookiesForUrl(url).size(), 1);
    bench.bringAbout(Call::Instances);
    QTRY_COMPARE(server.count(callPath(Call::Instances)), 2);
    QVERIFY(!anyRequestHasACookie(server));
}

void CookiesTest::twoAccountsOnOneWindowShareNothing()
{
    ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.reply(callPath(Call::Session), withCookies(Reply::json(200, R"({"user":{"display_name":"Ann"}})")));
    QVERIFY(bench.settleLinked());
    QCOMPARE(bench.view().account().constFirst(), u"Signed in as Ann"_s);
    bench.view().button(u"Unlink")->click();

    server.reply(callPath(Call::LinkStart), withCookies(Reply::json(200, R"({"code":"TWPC-TEST01"})")));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    server.reply(callPath(Call::LinkPoll), withCookies(Reply::json(200, R"({"access_token":"token-of-bob"})")));
    server.reply(callPath(Call::Session), withCookies(Reply::json(200, R"({"user":{"display_name":"Bob"}})")));
    bench.bringAbout(Call::LinkPoll);
    QTRY_COMPARE(bench.view().account().constFirst(), u"Signed in as Bob"_s);
    QTRY_COMPARE(bench.view().status(), u"Loaded 1 Tarnwick project(s)."_s);

    QVERIFY(!anyRequestHasACookie(server));
    const QList<RecordedRequest> sessions = server.requests(callPath(Call::Session));
    QCOMPARE(sessions.size(), 2);
    QCOMPARE(sessions.constFirst().header("Authorization"), "Bearer token-1");
    QCOMPARE(sessions.constLast().header("Authorization"), "Bearer token-of-bob");
}

QTEST_MAIN(CookiesTest)
#include "cookies_test.moc"
