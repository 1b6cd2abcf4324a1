// A service may use HTTP/2. The rules of HTTP/1.1 also apply there: one press is one request, and no reply may fill the
// memory.
#include "support/client_test.h"

#include "api/http2_service.h"
#include "support/system_memory.h"

#include <memory>

using support::Call;

namespace {

constexpr qint64 http2Mebibyte = 1024LL * 1024;
// A body that is too large is aborted within seconds; a transfer without progress after 20.
constexpr int http2PatienceMs = 15000;

} // namespace

class Http2Test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // For all tests: Qt's network thread may print something about a test after its end.
        messages = std::make_unique<support::MessageCatcher>();
    }

    void init()
    {
        service = std::make_unique<Http2Service>(tls.identity);
        run = std::make_unique<support::ClientRun>();
    }

    void cleanup()
    {
        run.reset();
        service.reset();
    }

    void cleanupTestCase()
    {
        const QList<support::CaughtMessage> entries = messages->entries();
        messages.reset();
        for (const support::CaughtMessage& entry : entries) {
            // Qt prints every broken stream in this category.
            QVERIFY2(entry.category == u"qt.network.http2"_s, qPrintable(entry.text));
        }
        const qint64 peak = support::peakMemoryBytes();
        if (peak == 0) {
            QSKIP("This system does not report the peak memory, or a sanitizer keeps freed memory.");
        }
        // An endless body is a gibibyte. Qt 6.8 has needed 430 MiB for the other ones.
        QVERIFY2(peak < 600 * http2Mebibyte, qPrintable(u"%1 MiB"_s.arg(peak / http2Mebibyte)));
    }

    void anAnswerCountsAsOverTheOtherProtocol()
    {
        QVERIFY(prepare(Call::Instances));
        service->answerWith(support::json("{'instances':[{},{}]}"));
        run->press(u"Refresh");
        QTRY_COMPARE(run->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
        QCOMPARE(service->requestCount(), 1);
    }

    void aBodyOverTheBoundIsAborted_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("shown");
        QTest::newRow("GET") << Call::Instances << 200 << u"Operation canceled"_s;
        QTest::newRow("POST") << Call::CreateInstance << 200 << u"Operation canceled"_s;
        // With an error status, the reply fails with that status.
        QTest::newRow("503") << Call::Instances << 503 << u"Tarnwick returned HTTP 503."_s;
    }

    void aBodyOverTheBoundIsAborted()
    {
        QFETCH(Call, call);
        QFETCH(int, status);
        QFETCH(QString, shown);
        QVERIFY(prepare(call));
        service->answerWith("0123456789abcdef", 1024 * http2Mebibyte, status);
        run->bringAbout(call);
        QTRY_COMPARE_WITH_TIMEOUT(run->view().status(), shown, http2PatienceMs);
        QTRY_COMPARE(service->abortedCount(), 1);
        QCOMPARE(service->requestCount(), 1);

        // The connection serves the next request.
        service->answerWith(support::json("{'instances':[{},{}]}"));
        run->press(u"Refresh");
        QTRY_COMPARE(run->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
    }

    void aBodyOfExactlyTheBoundIsRead()
    {
        QVERIFY(prepare(Call::Instances));
        QByteArray body = support::json("{'instances':[{},{},{}],'filler':'");
        body.append(QByteArray(64 * http2Mebibyte - body.size() - 2, 'x')).append("\"}");
        service->answerWith(body);
        body.clear();
        run->press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run->view().status(), u"Loaded 3 Tarnwick project(s)."_s, http2PatienceMs);
    }

    void aCreationArrivesOnce_data()
    {
        QTest::addColumn<Http2Service::Behaviour>("behaviour");
        QTest::newRow("connection closed") << Http2Service::Behaviour::Close;
        QTest::newRow("told to go away") << Http2Service::Behaviour::GoAway;
        QTest::newRow("request refused") << Http2Service::Behaviour::RefuseStream;
    }

    void aCreationArrivesOnce()
    {
        QFETCH(Http2Service::Behaviour, behaviour);
        QVERIFY(prepare(Call::CreateInstance));
        service->behave(behaviour);
        run->press(u"Create GDPS");
        QTRY_VERIFY(run->view().button(u"Create GDPS")->isEnabled());
        QCOMPARE(run->view().line(u"GDPS Name")->text(), u"Neon Burst"_s);

        service->behave(Http2Service::Behaviour::Answer);
        service->answerWith(support::json("{'instances':[{},{}]}"));
        run->press(u"Refresh");
        QTRY_COMPARE(run->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
        QCOMPARE(service->requestCount(), 2);
    }

private:
    /// Prepares the call, which will be the first request to the service under test.
    bool prepare(Call call)
    {
        if (!run->prepare(call)) {
            return false;
        }
        run->view().line(u"Tarnwick URL")->setText(service->origin());
        return true;
    }

    const support::TrustedTls tls{};
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<Http2Service> service;
    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(Http2Test)
#include "http2_test.moc"
