// A service that demands a password gets none, unless the base URL holds one: then Qt hands it over by itself.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>

#include <memory>

using support::Call;
using support::RecordedRequest;
using support::Reply;
using support::ScriptedServer;

class PasswordDemandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aDemandIsNotMet_data();
    void aDemandIsNotMet();
    void aDemandIsMetFromTheBaseUrlInAGet_data();
    void aDemandIsMetFromTheBaseUrlInAGet();
    void aPostIsNotSentAgainForADemand_data();
    void aPostIsNotSentAgainForADemand();

private:
    void play(const QString& userInfo, Call call, const Reply& demand, const QString& shown);

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

const QByteArray passwordBasicDemand = R"(Basic realm="x")";
const QByteArray passwordDigestDemand = R"(Digest realm="x", nonce="abc", qop="auth")";

Reply passwordDemand(int status, const QByteArray& header, const QByteArray& demand)
{
    return Reply::json(status, R"({"message":"Sign in again"})").header(header, demand);
}

} // namespace

void PasswordDemandTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
}

void PasswordDemandTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

/// Makes the call with this ahead of the host in the base URL, and has it answered by the demand.
void PasswordDemandTest::play(const QString& userInfo, Call call, const Reply& demand, const QString& shown)
{
    const QString origin = u"http://"_s + userInfo + u"127.0.0.1:%1"_s.arg(server->port());
    bench = std::make_unique<support::ServiceBench>(
        *server, [] { return std::make_unique<TarnwickClientWindow>(); }, origin);
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), demand);
    server->forgetRequests();
    bench->bringAbout(call);
    QTRY_COMPARE(bench->view().status(), shown);
}

void PasswordDemandTest::aDemandIsNotMet_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const auto add = [call](const char* name, int status, const QByteArray& header, const QByteArray& demand) {
            QTest::addRow("%s, %s", support::callName(call), name) << call << passwordDemand(status, header, demand);
        };
        add("basic", 401, "WWW-Authenticate", passwordBasicDemand);
        add("digest", 401, "WWW-Authenticate", passwordDigestDemand);
        add("bearer", 401, "WWW-Authenticate", "Bearer");
        add("proxy", 407, "Proxy-Authenticate", passwordBasicDemand);
    }
}

void PasswordDemandTest::aDemandIsNotMet()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    play({}, call, reply, u"Sign in again"_s);
    QCOMPARE(server->count(), 1);
}

void PasswordDemandTest::aDemandIsMetFromTheBaseUrlInAGet_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("demand");
    QTest::addColumn<QByteArray>("answer");
    for (const Call call : {Call::LinkPoll, Call::Session, Call::Instances}) {
        QTest::addRow("%s, basic", support::callName(call))
            << call << passwordBasicDemand << "Basic " + QByteArray("user:word").toBase64();
        QTest::addRow("%s, digest", support::callName(call))
            << call << passwordDigestDemand << QByteArray(R"(Digest username="user")");
    }
}

/// Once more and no further, with the password in the place of the token.
void PasswordDemandTest::aDemandIsMetFromTheBaseUrlInAGet()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, demand);
    QFETCH(QByteArray, answer);
    play(u"user:word@"_s, call, passwordDemand(401, "WWW-Authenticate", demand), u"Sign in again"_s);
    QCOMPARE(server->count(), 2);
    const QList<RecordedRequest> requests = server->requests(callPath(call));
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.constFirst().header("Authorization"), call == Call::LinkPoll ? "" : "Bearer token-1");
    QVERIFY(requests.constLast().header("Authorization").startsWith(answer));
}

void PasswordDemandTest::aPostIsNotSentAgainForADemand_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("demand");
    for (const Call call : {Call::LinkStart, Call::CreateInstance}) {
        QTest::addRow("%s, basic", support::callName(call)) << call << passwordBasicDemand;
        QTest::addRow("%s, digest", support::callName(call)) << call << passwordDigestDemand;
    }
}

/// Not even with the password at hand: its body cannot be read a second time, for which Qt has no words.
void PasswordDemandTest::aPostIsNotSentAgainForADemand()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, demand);
    play(u"user:word@"_s, call, passwordDemand(401, "WWW-Authenticate", demand), u"Unknown error"_s);
    QCOMPARE(server->count(), 1);
    QVERIFY(!server->requests().constFirst().header("Authorization").startsWith("Basic"));
}

QTEST_MAIN(PasswordDemandTest)
#include "password_demand_test.moc"
