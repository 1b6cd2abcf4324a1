// A service that demands a password gets none, unless the base URL contains one: then Qt sends it by itself.
#include "support/client_test.h"

#include <memory>

using support::Call;
using support::Reply;

namespace {

const QByteArray passwordBasicDemand = R"(Basic realm="x")";
const QByteArray passwordDigestDemand = R"(Digest realm="x", nonce="abc", qop="auth")";

Reply passwordDemand(int status, const QByteArray& header, const QByteArray& demand)
{
    return Reply::json(status, R"({"message":"Sign in again"})").header(header, demand);
}

} // namespace

class PasswordDemandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { run = std::make_unique<support::ClientRun>(); }

    void cleanup() { run.reset(); }

    void aDemandIsNotMet_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        for (const Call call : {Call::Instances, Call::CreateInstance}) {
            const auto add = [call](const char* name, int status, const QByteArray& header, const QByteArray& demand) {
                QTest::addRow("%s, %s", support::callName(call), name)
                    << call << passwordDemand(status, header, demand);
            };
            add("basic", 401, "WWW-Authenticate", passwordBasicDemand);
            add("digest", 401, "WWW-Authenticate", passwordDigestDemand);
            add("bearer", 401, "WWW-Authenticate", "Bearer");
            add("proxy", 407, "Proxy-Authenticate", passwordBasicDemand);
        }
    }

    void aDemandIsNotMet()
    {
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        play({}, call, reply, u"Sign in again"_s);
        QCOMPARE(run->server.count(), 1);
    }

    void aDemandIsMetFromTheBaseUrlInAGet_data()
    {
        QTest::addColumn<QByteArray>("demand");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("basic") << passwordBasicDemand << "Basic " + QByteArray("user:word").toBase64();
        QTest::newRow("digest") << passwordDigestDemand << QByteArray(R"(Digest username="user")");
    }

    /// Only one repetition, with the password in place of the token.
    void aDemandIsMetFromTheBaseUrlInAGet()
    {
        QFETCH(QByteArray, demand);
        QFETCH(QByteArray, answer);
        play(u"user:word@"_s, Call::Instances, passwordDemand(401, "WWW-Authenticate", demand), u"Sign in again"_s);
        const auto requests = run->server.requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.constFirst().header("Authorization"), "Bearer token-1");
        QVERIFY(requests.constLast().header("Authorization").startsWith(answer));
    }

    void aPostIsNotSentAgainForADemand_data()
    {
        QTest::addColumn<QByteArray>("demand");
        QTest::newRow("basic") << passwordBasicDemand;
        QTest::newRow("digest") << passwordDigestDemand;
    }

    /// Not even if the base URL has the password: the body cannot be read again, and Qt has no error text for this.
    void aPostIsNotSentAgainForADemand()
    {
        QFETCH(QByteArray, demand);
        play(u"user:word@"_s, Call::CreateInstance, passwordDemand(401, "WWW-Authenticate", demand),
             u"Unknown error"_s);
        QCOMPARE(run->server.count(), 1);
        QCOMPARE(run->server.requests().constFirst().header("Authorization"), "Bearer token-1");
    }

private:
    /// Makes the call with this user info in the base URL; the service replies with the demand.
    void play(const QString& userInfo, Call call, const Reply& demand, const QString& shown)
    {
        run->setOrigin(u"http://"_s + userInfo + u"127.0.0.1:%1"_s.arg(run->server.port()));
        QVERIFY(run->prepare(call));
        run->server.reply(callPath(call), demand);
        run->server.forgetRequests();
        run->bringAbout(call);
        QTRY_COMPARE(run->view().status(), shown);
    }

    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(PasswordDemandTest)
#include "password_demand_test.moc"
