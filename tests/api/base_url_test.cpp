// How the text of the URL field becomes the base URL. It is visible in three places: the next save, the address of the
// pairing page, and the requests.
#include "support/client_test.h"

using support::Reply;

class BaseUrlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFieldIsNormalised_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("baseUrl");
        QTest::newRow("empty") << QString() << support::defaultBaseUrl();
        QTest::newRow("blanks") << u" \t "_s << support::defaultBaseUrl();
        QTest::newRow("no-break space") << u"\u00a0"_s << support::defaultBaseUrl();
        QTest::newRow("host and port") << u"a.example:8443"_s << u"https://a.example:8443"_s;
        QTest::newRow("blanks around a host") << u"  a.example "_s << u"https://a.example"_s;
        QTest::newRow("one trailing slash") << u"a.example/"_s << u"https://a.example"_s;
        QTest::newRow("many trailing slashes") << u"https://a.example////"_s << u"https://a.example"_s;
        QTest::newRow("slash, then a blank") << u"https://a.example/ "_s << u"https://a.example"_s;
        QTest::newRow("a blank before the slashes") << u"https://a.example //"_s << u"https://a.example "_s;
        QTest::newRow("plain HTTP") << u"http://a.example"_s << u"http://a.example"_s;
        QTest::newRow("plain HTTP, slashes") << u"http://a.example//"_s << u"http://a.example"_s;
        QTest::newRow("upper-case scheme") << u"HTTPS://a.example"_s << u"https://HTTPS://a.example"_s;
        QTest::newRow("mixed-case scheme") << u"Http://a.example/"_s << u"https://Http://a.example"_s;
        QTest::newRow("another scheme") << u"ftp://a.example"_s << u"https://ftp://a.example"_s;
        QTest::newRow("scheme with one slash") << u"http:/a.example"_s << u"https://http:/a.example"_s;
        QTest::newRow("https alone") << u"https://"_s << u"https:"_s;
        QTest::newRow("http alone") << u"http://"_s << u"http:"_s;
        QTest::newRow("slashes alone") << u"//"_s << u"https:"_s;
        QTest::newRow("path") << u"a.example/tarnwick/"_s << u"https://a.example/tarnwick"_s;
        QTest::newRow("query") << u"https://a.example/?a=b/"_s << u"https://a.example/?a=b"_s;
        QTest::newRow("nonsense") << u"not a host!"_s << u"https://not a host!"_s;
        QTest::newRow("umlauts") << u"bücher.example"_s << u"https://bücher.example"_s;
    }

    void theFieldIsNormalised()
    {
        QFETCH(QString, typed);
        QFETCH(QString, baseUrl);
        support::ClientRun run;
        run.start();
        run.view().line(u"Tarnwick URL")->setText(typed);
        run.window().close();
        QCOMPARE(run.savedText(u"origin"_s), baseUrl);
        // The field shows what was typed.
        QCOMPARE(run.view().line(u"Tarnwick URL")->text(), typed);
    }

    void thePairingPageIsUnderTheBaseUrl_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("opened");
        QTest::newRow("empty") << QString() << support::defaultBaseUrl() + u"/link/pc"_s;
        QTest::newRow("host") << u"a.example//"_s << u"https://a.example/link/pc"_s;
        QTest::newRow("path") << u"http://a.example:81/x"_s << u"http://a.example:81/x/link/pc"_s;
        QTest::newRow("https alone") << u"https://"_s << u"https:/link/pc"_s;
    }

    void thePairingPageIsUnderTheBaseUrl()
    {
        QFETCH(QString, typed);
        QFETCH(QString, opened);
        support::ClientRun run;
        run.start();
        run.view().line(u"Tarnwick URL")->setText(typed);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(opened)});
    }

    void pathsAreJoinedAsPlainText_data()
    {
        QTest::addColumn<QString>("tail");
        QTest::addColumn<QByteArray>("target");
        QTest::newRow("slashes") << u"///"_s << QByteArray("/api/pc/me");
        QTest::newRow("path with a blank") << u"/my server/"_s << QByteArray("/my%20server/api/pc/me");
        QTest::newRow("path with an umlaut") << u"/büro"_s << QByteArray("/b%C3%BCro/api/pc/me");
        QTest::newRow("lone percent sign") << u"/100%/"_s << QByteArray("/100%25/api/pc/me");
        QTest::newRow("query") << u"/x?y=1"_s << QByteArray("/x?y=1/api/pc/me");
        QTest::newRow("fragment") << u"/x#y"_s << QByteArray("/x");
    }

    void pathsAreJoinedAsPlainText()
    {
        QFETCH(QString, tail);
        QFETCH(QByteArray, target);
        support::ClientRun run;
        run.setOrigin(run.server.origin() + tail);
        run.server.onRequest([](const auto&) { return Reply::empty(500); });
        run.server.reply("/api/pc/me", Reply::empty(500));
        run.startLinked();
        QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
        QCOMPARE(run.server.count(), 1);
        QCOMPARE(run.server.requests().constFirst().target, target);
    }

    void aTypedUrlCountsFromTheNextRequestOn()
    {
        support::ClientRun run;
        support::ScriptedServer another;
        another.onRequest([](const auto&) { return Reply::json(200, "{}"); });
        QVERIFY(run.startSignedIn());
        run.server.forgetRequests();
        run.view().line(u"Tarnwick URL")->setText(another.origin() + u"/deep/"_s);
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
        QCOMPARE(another.requests().constFirst().target, "/deep/api/pc/instances");
        QCOMPARE(run.server.count(), 0);
    }
};

TARNWICK_TEST(BaseUrlTest)
#include "base_url_test.moc"
