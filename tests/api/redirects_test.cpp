// A redirect must not carry the token, or anything else, to another origin.
#include "support/client_test.h"

#include <QNetworkReply>

#include <memory>

using support::Call;
using support::ClientRun;
using support::Reply;
using support::ScriptedServer;

class RedirectsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherOriginIsNotAsked_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("destination");
        const auto add = [](Call call, int status, const char* destination) {
            QTest::addRow("%s, %d, another %s", support::callName(call), status, destination)
                << call << status << QString::fromLatin1(destination);
        };
        for (const Call call : {Call::Instances, Call::CreateInstance}) {
            for (const int status : {301, 302, 303, 307, 308}) {
                add(call, status, "port");
            }
            for (const char* destination : {"host", "host, without a scheme", "https from http", "http from https"}) {
                add(call, 302, destination);
            }
        }
        for (const Call call : {Call::LinkStart, Call::LinkPoll, Call::Session}) {
            add(call, 302, "port");
        }
    }

    void anotherOriginIsNotAsked()
    {
        QFETCH(Call, call);
        QFETCH(int, status);
        QFETCH(QString, destination);
        const auto run = destination == u"http from https"_s ? std::make_unique<ClientRun>(tls.identity)
                                                             : std::make_unique<ClientRun>();
        const auto another = destination == u"https from http"_s ? std::make_unique<ScriptedServer>(tls.identity)
                                                                 : std::make_unique<ScriptedServer>();
        QString elsewhere =
            (destination.startsWith(u"host"_s) ? run->server.origin(u"localhost"_s) : another->origin()) +
            u"/elsewhere"_s;
        if (destination == u"host, without a scheme"_s) {
            elsewhere.remove(0, u"http:"_s.size());
        }
        QVERIFY(run->prepare(call));
        run->server.reply(callPath(call), Reply::redirect(status, elsewhere.toUtf8()));
        run->server.forgetRequests();
        run->bringAbout(call);
        QTRY_COMPARE(run->view().status(), u"Insecure redirect"_s);
        QCOMPARE(run->server.count(), 1);
        QVERIFY(run->markerComesBack());
        QCOMPARE(another->connectionCount(), 0);
        QCOMPARE(run->server.count("/elsewhere"), 0);
    }

    void theSameOriginIsFollowed_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("isAbsolute");
        for (const int status : {301, 302, 303, 307, 308}) {
            QTest::addRow("GET, %d", status) << Call::Instances << status << true;
        }
        QTest::newRow("GET, path only") << Call::Instances << 302 << false;
        for (const int status : {301, 302, 303}) {
            QTest::addRow("POST, %d", status) << Call::CreateInstance << status << true;
        }
        QTest::newRow("POST, path only") << Call::LinkStart << 302 << false;
    }

    void theSameOriginIsFollowed()
    {
        QFETCH(Call, call);
        QFETCH(int, status);
        QFETCH(bool, isAbsolute);
        ClientRun run;
        QVERIFY(run.prepare(call));
        const QByteArray location = (isAbsolute ? run.server.origin().toUtf8() : QByteArray()) + "/moved/here?x=1";
        run.server.reply(callPath(call), Reply::redirect(status, location));
        run.server.reply("/moved/here", Reply::json(500, R"({"message":"You found it"})"));
        run.server.forgetRequests();
        run.bringAbout(call);
        // The target's reply is handled like a direct reply to the request.
        QTRY_COMPARE(run.view().status(), u"You found it"_s);
        QCOMPARE(run.server.count(), 2);
        const support::RecordedRequest followed = run.server.requests().constLast();
        QCOMPARE(followed.method, "GET");
        QCOMPARE(followed.target, "/moved/here?x=1");
        QCOMPARE(followed.body, QByteArray());
        QCOMPARE(followed.header("Accept"), "application/json");
        QCOMPARE(followed.header("User-Agent"), "Tarnwick-QtClient/1.0");
        QCOMPARE(followed.header("Authorization"), call == Call::LinkStart ? "" : "Bearer token-1");
    }

    void aPostThatWouldHaveToBeSentAgainIsNot_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("307") << 307;
        QTest::newRow("308") << 308;
    }

    /// The body cannot be read again, and Qt has no error text for this.
    void aPostThatWouldHaveToBeSentAgainIsNot()
    {
        QFETCH(int, status);
        ClientRun run;
        QVERIFY(run.prepare(Call::CreateInstance));
        run.server.reply(callPath(Call::CreateInstance), Reply::redirect(status, "/moved"));
        run.server.forgetRequests();
        run.press(u"Create GDPS");
        QTRY_COMPARE(run.view().status(), u"Unknown error"_s);
        QCOMPARE(run.view().line(u"GDPS Name")->text(), u"Neon Burst"_s);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 1);
        QCOMPARE(run.server.count("/moved"), 0);
    }

    void aChainThatLeavesTheOriginEndsThere()
    {
        ClientRun run;
        const ScriptedServer another;
        QVERIFY(run.startSignedIn());
        run.server.reply(callPath(Call::Instances), Reply::redirect(302, "/first"));
        run.server.reply("/first", Reply::redirect(302, "/second"));
        run.server.reply("/second", Reply::redirect(302, another.origin().toUtf8() + "/third"));
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), u"Insecure redirect"_s);
        QCOMPARE(run.server.count("/second"), 1);
        QCOMPARE(another.connectionCount(), 0);
    }

    void whatIsNoRedirectIsNotFollowed_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("shown");
        const QString loaded = u"Loaded 0 Tarnwick project(s)."_s;
        for (const int status : {200, 201, 202, 300, 304, 306}) {
            QTest::addRow("%d", status) << status << loaded;
        }
        // Qt treats this one as a redirect, which fails.
        QTest::newRow("305") << 305 << u"Insecure redirect"_s;
        QTest::newRow("500") << 500 << u"Tarnwick returned HTTP 500."_s;
    }

    /// Other replies may have a Location header, too.
    void whatIsNoRedirectIsNotFollowed()
    {
        QFETCH(int, status);
        QFETCH(QString, shown);
        ClientRun run;
        const ScriptedServer another;
        QVERIFY(run.startSignedIn());
        run.server.reply(callPath(Call::Instances),
                         Reply::json(status, "{}").header("Location", another.origin().toUtf8() + "/elsewhere"));
        run.server.forgetRequests();
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), shown);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Instances)), 1);
        QCOMPARE(another.connectionCount(), 0);
    }

private:
    const support::TrustedTls tls{};
};

TARNWICK_TEST(RedirectsTest)
#include "redirects_test.moc"
