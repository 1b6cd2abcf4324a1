// Only the token identifies this desktop. A cookie would identify it too, and even after unlinking.
#include "support/client_test.h"

#include <QNetworkAccessManager>
#include <QNetworkCookie>
#include <QNetworkCookieJar>

#include <algorithm>

using support::Call;
using support::Reply;

namespace {

Reply withCookies(const Reply& reply)
{
    return reply.setCookie("session=ann; Path=/; Max-Age=86400").setCookie("kept=for-good; HttpOnly");
}

bool anyRequestHasACookie(const support::ScriptedServer& server)
{
    const auto requests = server.requests();
    return std::any_of(requests.begin(), requests.end(), [](const auto& one) { return one.hasHeader("Cookie"); });
}

QNetworkCookieJar* cookieJarOf(const QWidget& window)
{
    return window.findChild<QNetworkAccessManager*>({}, Qt::FindDirectChildrenOnly)->cookieJar();
}

} // namespace

class CookiesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noReplysCookieIsKept_data()
    {
        QTest::addColumn<Call>("call");
        QTest::newRow("GET") << Call::Instances;
        QTest::newRow("POST") << Call::CreateInstance;
    }

    void noReplysCookieIsKept()
    {
        QFETCH(Call, call);
        support::ClientRun run;
        QVERIFY(run.prepare(call));
        run.server.reply(callPath(call), withCookies(Reply::json(500, R"({"message":"With a cookie"})")));
        run.bringAbout(call);
        QTRY_COMPARE(run.view().status(), u"With a cookie"_s);
        QVERIFY(cookieJarOf(run.window())->cookiesForUrl(QUrl(run.server.origin() + u"/api/pc/me"_s)).isEmpty());
        QVERIFY(run.markerComesBack());
        QVERIFY(!anyRequestHasACookie(run.server));
    }

    void aRedirectsCookieIsNotSentToItsTarget()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        run.server.reply(callPath(Call::Instances), withCookies(Reply::redirect(302, "/moved")));
        run.server.reply("/moved", withCookies(Reply::json(200, "{}")));
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
        QCOMPARE(run.server.count("/moved"), 1);
        QVERIFY(!anyRequestHasACookie(run.server));
    }

    void aCookieThatIsInTheJarAlreadyIsNotSent()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        const QUrl url(run.server.origin());
        QVERIFY(cookieJarOf(run.window())->setCookiesFromUrl({QNetworkCookie("left", "over")}, url));
        QCOMPARE(cookieJarOf(run.window())->cookiesForUrl(url).size(), 1);
        QVERIFY(run.markerComesBack());
        run.press(u"Refresh");
        QTRY_COMPARE(run.server.count(callPath(Call::Instances)), 2);
        QVERIFY(!anyRequestHasACookie(run.server));
    }
};

TARNWICK_TEST(CookiesTest)
#include "cookies_test.moc"
