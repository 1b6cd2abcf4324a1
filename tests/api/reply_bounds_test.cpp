// A reply that has no end, or next to none, must not take the memory of the machine.
#include "app/tarnwick_client_window.h"

#include "api/request_limits.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/system_memory.h"

#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplyBoundsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void aBodyOverTheBoundIsGivenUp_data();
    void aBodyOverTheBoundIsGivenUp();
    void anErrorStatusStaysThatError();
    void aPendingPollKeepsWaiting();
    void aBodyOfExactlyTheBoundIsRead();
    void aBodyOfOneByteMoreIsGivenUp();
    void theBodyOfARedirectIsDropped();
    void aCompressedReplyIsRead();
    void aCompressedBodyCountsByWhatComesOutOfIt_data();
    void aCompressedBodyCountsByWhatComesOutOfIt();

private:
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

constexpr qint64 boundsMebibyte = 1024LL * 1024;
constexpr qint64 boundsEndless = 1024 * boundsMebibyte;
// A body over the bound is given up within seconds, on a busy machine too.
constexpr int boundsPatienceMs = 30000;

static_assert(requestMaxReplyBytes == 64 * boundsMebibyte);

/// A reply in the coding that is a compressed stream with a checksum and no file header around it.
Reply deflatedReply(const QByteArray& body)
{
    // Without the four bytes of length that Qt puts in front.
    return Reply::json(200, qCompress(body, 1).mid(4)).header("Content-Encoding", "deflate");
}

/// Text that does not shrink by much: hexadecimal digits without a pattern in reach of the compressor.
QByteArray hardlyCompressible(qint64 size)
{
    QByteArray text;
    text.reserve(size);
    quint32 number = 1;
    while (text.size() < size) {
        number = number * 1664525U + 1013904223U;
        text.append(QByteArray::number(number | 0x80000000U, 16));
    }
    return text;
}

} // namespace

void ReplyBoundsTest::initTestCase()
{
    // Nothing but the bound can end a reply within the time that this test waits for it.
    QVERIFY(requestTimeoutMs > boundsPatienceMs);
}

void ReplyBoundsTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void ReplyBoundsTest::cleanup()
{
    bench.reset();
    server.reset();
    // A reply that was given up is closed; reading it all the same would print a warning.
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void ReplyBoundsTest::cleanupTestCase()
{
    const qint64 peak = support::peakMemoryBytes();
    if (peak == 0) {
        QSKIP("Nobody tells how much memory this process has had, or a sanitizer keeps what is freed.");
    }
    QVERIFY2(peak < 400 * boundsMebibyte, qPrintable(u"%1 MiB"_s.arg(peak / boundsMebibyte)));
}

void ReplyBoundsTest::aBodyOverTheBoundIsGivenUp_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    const Reply endless = Reply::huge(200, boundsEndless, R"({"message":"x"} )");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::newRow(support::callName(call)) << call << endless;
    }
    QTest::newRow("without a length") << Call::Instances << endless.withoutContentLength();
    QTest::newRow("in one chunk") << Call::Instances << endless.chunked();
    QTest::newRow("with a lower length") << Call::CreateInstance << endless.contentLength(boundsEndless / 2);
}

void ReplyBoundsTest::aBodyOverTheBoundIsGivenUp()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), reply);
    bench->bringAbout(call);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Operation canceled"_s, boundsPatienceMs);
    QVERIFY(bench->view().button(u"Generate Link Code")->isEnabled());
    // The connection is given up with it: nobody goes on reading.
    QTRY_COMPARE(server->openConnectionCount(), 0);
    if (call == Call::CreateInstance) {
        QCOMPARE(bench->view().line(u"GDPS Name")->text(), u"Neon Burst"_s);
        QVERIFY(bench->view().button(u"Create GDPS")->isEnabled());
    }
}

void ReplyBoundsTest::anErrorStatusStaysThatError()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->reply(callPath(Call::Instances), Reply::huge(500, boundsEndless));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Tarnwick returned HTTP 500."_s, boundsPatienceMs);
}

void ReplyBoundsTest::aPendingPollKeepsWaiting()
{
    QVERIFY(bench->prepare(Call::LinkPoll));
    server->reply(callPath(Call::LinkPoll), Reply::huge(202, boundsEndless));
    bench->bringAbout(Call::LinkPoll);
    QTRY_VERIFY_WITH_TIMEOUT(bench->view().status().startsWith(u"Waiting for approval at "_s), boundsPatienceMs);
}

void ReplyBoundsTest::aBodyOfExactlyTheBoundIsRead()
{
    QVERIFY(bench->prepare(Call::Instances));
    QByteArray body = R"({"instances":[{},{},{}],"filler":")";
    body.append(QByteArray(requestMaxReplyBytes - body.size() - 2, 'x')).append("\"}");
    server->reply(callPath(Call::Instances), Reply::json(200, body));
    body.clear();
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Loaded 3 Tarnwick project(s)."_s, boundsPatienceMs);
}

void ReplyBoundsTest::aBodyOfOneByteMoreIsGivenUp()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->reply(callPath(Call::Instances), Reply::huge(200, requestMaxReplyBytes + 1));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Operation canceled"_s, boundsPatienceMs);
}

/// It has no bound, for it takes no memory: the peak at the end of this program tells.
void ReplyBoundsTest::theBodyOfARedirectIsDropped()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->reply(callPath(Call::Instances), Reply::huge(302, boundsEndless).header("Location", "/moved"));
    server->reply("/moved", Reply::json(200, R"({"instances":[{},{}]})"));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE_WITH_TIMEOUT(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s, boundsPatienceMs);
    QCOMPARE(server->count("/moved"), 1);
}

void ReplyBoundsTest::aCompressedReplyIsRead()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->reply(callPath(Call::Instances), deflatedReply(R"({"instances":[{},{}]})"));
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
}

void ReplyBoundsTest::aCompressedBodyCountsByWhatComesOutOfIt_data()
{
    QTest::addColumn<bool>("isBomb");
    QTest::newRow("shrunk to almost nothing") << true;
    QTest::newRow("shrunk by half") << false;
}

void ReplyBoundsTest::aCompressedBodyCountsByWhatComesOutOfIt()
{
    QFETCH(bool, isBomb);
    QVERIFY(bench->prepare(Call::Instances));
    const qint64 size = requestMaxReplyBytes + boundsMebibyte;
    server->reply(callPath(Call::Instances), deflatedReply(isBomb ? QByteArray(size, ' ') : hardlyCompressible(size)));
    bench->bringAbout(Call::Instances);
    QTRY_VERIFY_WITH_TIMEOUT(bench->view().button(u"Refresh")->isEnabled(), boundsPatienceMs);
    QVERIFY(!bench->view().status().isEmpty());
    QVERIFY2(!bench->view().status().startsWith("Loaded"_L1), qPrintable(bench->view().status()));
    QVERIFY(bench->view().status() != u"Refreshing your Tarnwick projects..."_s);
    QCOMPARE(bench->view().table()->rowCount(), 1);
}

QTEST_MAIN(ReplyBoundsTest)
#include "reply_bounds_test.moc"
