// The five requests, as the service receives them.
#include "support/client_test.h"

#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <memory>

using support::Call;
using support::RecordedRequest;

namespace {

/// The names as the Qt version in use sends them, sorted.
QList<QByteArray> asSent(QList<QByteArray> names)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    std::transform(names.begin(), names.end(), names.begin(), [](const QByteArray& name) { return name.toLower(); });
#endif
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

class RequestBytesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { run = std::make_unique<support::ClientRun>(); }

    void cleanup() { run.reset(); }

    void everyCallHasItsBytes_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<QByteArray>("body");
        const QByteArray none;
        QTest::newRow("link start") << Call::LinkStart << "POST /api/pc/link/start HTTP/1.1\r\n"_ba << none
                                    << "device_id=desk-1"_ba;
        QTest::newRow("link poll") << Call::LinkPoll
                                   << "GET /api/pc/link/poll?code=TWPC-TEST01&device_id=desk-1 HTTP/1.1\r\n"_ba << none
                                   << none;
        QTest::newRow("session") << Call::Session << "GET /api/pc/me HTTP/1.1\r\n"_ba
                                 << "Bearer token-1"_ba << none;
        QTest::newRow("instances") << Call::Instances << "GET /api/pc/instances HTTP/1.1\r\n"_ba
                                   << "Bearer token-1"_ba << none;
        QTest::newRow("create") << Call::CreateInstance << "POST /api/pc/instances/create HTTP/1.1\r\n"_ba
                                << "Bearer token-1"_ba
                                << "display_name=Neon%20Burst&description=&emoji_badge=%F0%9F%94%A5"
                                   "&accent_color=%23ff8f1f&tags=&preset_name=balanced"
                                   "&core_key=core-a&public_listing=true"_ba;
    }

    /// Including all header names: an additional header is an error as well.
    void everyCallHasItsBytes()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, token);
        QFETCH(QByteArray, body);
        QVERIFY(send(call));
        QCOMPARE(run->server.count(), 1);
        const RecordedRequest request = sent(call);
        QCOMPARE(request.raw.first(request.raw.indexOf('\n') + 1), line);
        QCOMPARE(request.body, body);
        QList<QByteArray> expected{"Accept", "User-Agent", "Host", "Connection", "Accept-Encoding", "Accept-Language"};
        expected += token.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{"Authorization"};
        expected += body.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{"Content-Type", "Content-Length"};
        QList<QByteArray> names;
        for (const RecordedRequest::Header& header : request.headers) {
            names.append(header.first);
        }
        std::sort(names.begin(), names.end());
        QCOMPARE(names, asSent(expected));
        QCOMPARE(request.header("Accept"), "application/json");
        QCOMPARE(request.header("User-Agent"), "Tarnwick-QtClient/1.0");
        QCOMPARE(request.header("Host"), "127.0.0.1:" + QByteArray::number(run->server.port()));
        QCOMPARE(request.header("Authorization"), token);
        QCOMPARE(request.header("Content-Type"), body.isEmpty() ? "" : "application/x-www-form-urlencoded");
        QCOMPARE(request.header("Content-Length"), body.isEmpty() ? QByteArray() : QByteArray::number(body.size()));
    }

    void pairingIsAnonymousEvenWhileLinked()
    {
        QVERIFY(run->startSignedIn());
        QVERIFY(run->showLinkCode(u"TWPC-TEST01"_s));
        run->server.hold(callPath(Call::LinkPoll));
        run->tick();
        QTRY_COMPARE(run->server.heldCount(callPath(Call::LinkPoll)), 1);
        QVERIFY(!sent(Call::LinkStart).raw.contains("token-1"));
        QVERIFY(!sent(Call::LinkPoll).raw.contains("token-1"));
    }

    void thePollsQueryIsEncoded()
    {
        run->home().writeState(support::storedState(run->server.origin(), {}, u"my desk+ä&x=1"_s));
        run->startStored();
        QVERIFY(run->showLinkCode(u"A b+%41#/?"_s));
        run->tick();
        QTRY_COMPARE(run->server.count(callPath(Call::LinkPoll)), 1);
        QCOMPARE(sent(Call::LinkStart).body, "device_id=my%20desk+%C3%A4%26x%3D1");
        QCOMPARE(sent(Call::LinkPoll).query(), "code=A%20b+A%23/?&device_id=my%20desk+%C3%A4%26x%3D1");
    }

    void everyRequestIsTaggedAndLimited_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("kind");
        QTest::newRow("link start") << Call::LinkStart << 0;
        QTest::newRow("link poll") << Call::LinkPoll << 1;
        QTest::newRow("session") << Call::Session << 2;
        QTest::newRow("instances") << Call::Instances << 3;
        QTest::newRow("create") << Call::CreateInstance << 4;
    }

    void everyRequestIsTaggedAndLimited()
    {
        QFETCH(Call, call);
        QFETCH(int, kind);
        QVERIFY(send(call));
        // Earlier replies have been deleted: the one in flight remains.
        QTRY_COMPARE(run->window().findChildren<QNetworkReply*>().size(), 1);
        const QNetworkReply* reply = run->window().findChild<QNetworkReply*>();
        QCOMPARE(reply->property("taskKind").typeId(), QMetaType::Int);
        QCOMPARE(reply->property("taskKind").toInt(), kind);
        QCOMPARE(reply->request().transferTimeout(), 20000);
        // The reply owns the body of its request. Nobody else would delete it.
        const bool hasBody = call == Call::LinkStart || call == Call::CreateInstance;
        QCOMPARE(reply->findChildren<QIODevice*>().size(), hasBody ? 1 : 0);
    }

private:
    /// Makes the call and waits until it has arrived.
    bool send(Call call)
    {
        if (!run->prepare(call)) {
            return false;
        }
        run->server.hold(callPath(call));
        run->server.forgetRequests();
        run->bringAbout(call);
        return support::waitFor([this, call] { return run->server.heldCount(callPath(call)) == 1; });
    }
    RecordedRequest sent(Call call) const { return run->server.requests(callPath(call)).constLast(); }

    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(RequestBytesTest)
#include "request_bytes_test.moc"
