// An endless or huge reply must not fill the memory.
#include "support/client_test.h"

#include "support/system_memory.h"

using support::Call;
using support::Reply;

namespace {

constexpr qint64 boundsMebibyte = 1024LL * 1024;
constexpr qint64 boundsEndless = 1024 * boundsMebibyte;
constexpr qint64 boundsMaxReplyBytes = 64 * boundsMebibyte;
// A body that is too large is aborted within seconds; a transfer without progress after 20.
constexpr int boundsPatienceMs = 15000;

/// A reply with "Content-Encoding: deflate", which is zlib's format.
Reply deflatedReply(const QByteArray& body)
{
    // Without the length in the first four bytes, which qCompress() adds.
    return Reply::json(200, qCompress(body, 1).mid(4)).header("Content-Encoding", "deflate");
}

/// Text that is hard to compress: hexadecimal digits that do not repeat within the compressor's window.
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

class ReplyBoundsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanupTestCase()
    {
        const qint64 peak = support::peakMemoryBytes();
        if (peak == 0) {
            QSKIP("This system does not report the peak memory, or a sanitizer keeps freed memory.");
        }
        // An endless body is a gibibyte. Qt 6.8 has needed 430 MiB for the other ones.
        QVERIFY2(peak < 600 * boundsMebibyte, qPrintable(u"%1 MiB"_s.arg(peak / boundsMebibyte)));
    }

    void aBodyOverTheBoundIsAborted_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        const QString aborted = u"Operation canceled"_s;
        const Reply endless = Reply::huge(200, boundsEndless, support::json("{'message':'x'} "));
        QTest::newRow("GET") << Call::Instances << endless << aborted;
        QTest::newRow("POST") << Call::CreateInstance << endless << aborted;
        QTest::newRow("without a length") << Call::Instances << endless.withoutContentLength() << aborted;
        QTest::newRow("in one chunk") << Call::Instances << endless.chunked() << aborted;
        // A status that is decisive on its own is decisive here, too.
        QTest::newRow("500") << Call::Instances << Reply::huge(500, boundsEndless) << u"Tarnwick returned HTTP 500."_s;
        QTest::newRow("202") << Call::LinkPoll << Reply::huge(202, boundsEndless)
                             << u"Waiting for approval at " TARNWICK_PUBLIC_HOST "/link/pc."_s;
    }

    void aBodyOverTheBoundIsAborted()
    {
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        support::ClientRun run;
        QVERIFY(run.prepare(call));
        run.server.reply(callPath(call), reply);
        run.bringAbout(call);
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), shown, boundsPatienceMs);
        // The connection is closed as well: the client does not read on.
        QTRY_COMPARE(run.server.openConnectionCount(), 0);
    }

    void aBodyOfOneByteMoreIsAborted()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        run.server.reply(callPath(Call::Instances), Reply::huge(200, boundsMaxReplyBytes + 1));
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), u"Operation canceled"_s, boundsPatienceMs);
    }

    void aBodyOfExactlyTheBoundIsRead()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        QByteArray body = support::json("{'instances':[{},{},{}],'filler':'");
        body.append(QByteArray(boundsMaxReplyBytes - body.size() - 2, 'x')).append("\"}");
        run.server.reply(callPath(Call::Instances), Reply::json(200, body));
        body.clear();
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), u"Loaded 3 Tarnwick project(s)."_s, boundsPatienceMs);
    }

    /// It is not limited, because it takes no memory: cleanupTestCase() checks the program's peak.
    void theBodyOfARedirectIsDropped()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        run.server.reply(callPath(Call::Instances), Reply::huge(302, boundsEndless).header("Location", "/moved"));
        run.server.reply("/moved", Reply::json(200, support::json("{'instances':[{},{}]}")));
        run.press(u"Refresh");
        QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), u"Loaded 2 Tarnwick project(s)."_s, boundsPatienceMs);
        QCOMPARE(run.server.count("/moved"), 1);
    }

    void aCompressedBodyCountsByWhatComesOutOfIt_data()
    {
        QTest::addColumn<bool>("isBomb");
        QTest::newRow("shrunk to almost nothing") << true;
        QTest::newRow("shrunk by half") << false;
    }

    void aCompressedBodyCountsByWhatComesOutOfIt()
    {
        QFETCH(bool, isBomb);
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        const qint64 size = boundsMaxReplyBytes + boundsMebibyte;
        run.server.reply(callPath(Call::Instances),
                         deflatedReply(isBomb ? QByteArray(size, ' ') : hardlyCompressible(size)));
        run.press(u"Refresh");
        QTRY_VERIFY_WITH_TIMEOUT(run.view().button(u"Refresh")->isEnabled(), boundsPatienceMs);
        // Qt itself rejects data with too high a compression ratio. Newer versions add a reason.
        const QString status = run.view().status();
        QVERIFY2(status.startsWith(isBomb ? u"Decompression failed: "_s : u"Operation canceled"_s), qPrintable(status));
        QCOMPARE(run.view().table()->rowCount(), 1);
    }
};

TARNWICK_TEST(ReplyBoundsTest)
#include "reply_bounds_test.moc"
