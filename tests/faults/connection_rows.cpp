#include "connection_rows.h"

#include "gzipped.h"

#include <QJsonArray>
#include <QJsonObject>

using support::Call;
using support::Reply;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

const QString closedText = u"Connection closed"_s;
const QString stalledText = u"Operation canceled"_s;
const QString wordsText = u"The service's words"_s;

const QByteArray wholeBytes = R"({"message":"The service's words","instances":[{},{}]})";

Reply whole(int status = 200)
{
    return Reply::json(status, wholeBytes);
}

QJsonObject wholeBody()
{
    return {{u"message"_s, wordsText}, {u"instances"_s, QJsonArray{QJsonObject(), QJsonObject()}}};
}

Reply half(int status)
{
    return whole(status).cutBodyAfter(20);
}

Reply deflated(const QByteArray& content)
{
    // The first four bytes are Qt's own.
    return Reply::json(200, qCompress(content, 9).mid(4)).header("Content-Encoding", "deflate");
}

Reply packed(const QByteArray& gzipFile)
{
    return Reply::json(200, gzipFile).header("Content-Encoding", "gzip");
}

QByteArray withWrongChecksum(QByteArray gzipFile)
{
    gzipFile[gzipFile.size() - 8] = static_cast<char>(~gzipFile.at(gzipFile.size() - 8));
    return gzipFile;
}

FaultOutcome failure(int status, const QString& errorText)
{
    return {.status = status, .errorText = errorText, .body = {}};
}

FaultOutcome success(int status, const QJsonObject& body = {})
{
    return {.status = status, .errorText = {}, .body = body};
}

/// The body comes once the client is done with the head. Where an answer ends together with its connection, Qt counts
/// it as one only if it was reading by then; how fast it gets there is the machine's affair.
QList<ConnectionRow> inTwoParts(QList<ConnectionRow> rows)
{
    for (ConnectionRow& row : rows) {
        row.reply = row.reply.holdBody();
    }
    return rows;
}

} // namespace

QList<ConnectionRow> brokenOffRows(Call call)
{
    // A POST is not sent a second time, and Qt has no words for what keeps it from doing so.
    const bool isPost = call == Call::LinkStart || call == Call::CreateInstance;
    const FaultOutcome unanswered = failure(0, isPost ? u"Unknown error"_s : closedText);
    return inTwoParts({
        {"closed without an answer", Reply::closeWithoutAnswer(), unanswered},
        {"reset without an answer", Reply::resetWithoutAnswer(), unanswered},
        {"half a status line", Reply::raw("HTTP/1.1 20"), unanswered},
        {"half a status line, then a reset", Reply::raw("HTTP/1.1 20").thenReset(), unanswered},
        {"half the headers", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: appl"), unanswered},
        {"half the headers, then a reset", Reply::raw("HTTP/1.1 200 OK\r\nContent-Type: appl").thenReset(), unanswered},
        {"garbage", Reply::raw("\x16\x03\x01 this is no answer\r\n\r\n"), unanswered},
        {"garbage that goes on", Reply::raw(QByteArray(70000, '\x7f')), unanswered},
        {"a greeting of another protocol", Reply::raw("220 mail.example ESMTP\r\n"), unanswered},
        {"an empty line", Reply::raw("\r\n"), unanswered},
        {"a status without a number", Reply::raw("HTTP/1.1 good\r\n\r\n"), unanswered},
        {"headers that do not end", Reply::raw("HTTP/1.1 200 OK\r\n" + QByteArray("X: y\r\n").repeated(50000)),
         unanswered},
        {"half a body", half(200), failure(200, closedText)},
        {"half a body, then a reset", half(200).thenReset(), failure(200, closedText)},
        {"a whole object, but less than announced", whole().contentLength(900).thenClose(), failure(200, wordsText)},
        {"half a body of an error", half(503), failure(503, u"Tarnwick returned HTTP 503."_s)},
        {"half a body of a 202", half(202), success(202)},
        {"half a body of a 202, then a reset", half(202).thenReset(), success(202)},
    });
}

QList<ConnectionRow> badBodyRows()
{
    using Fault = Reply::ChunkFault;
    const FaultOutcome packing = failure(200, u"Decompression failed: "_s);
    static const Reply bomb = packed(gzipped(QByteArray(80LL * 1024 * 1024, '0')));
    return inTwoParts({
        // Qt takes a size that is no number for the end of the body. What has come by then is no object.
        {"a chunk without a size", whole().chunked(10, Fault::BadSize), success(200)},
        {"a chunk that is too short", whole().chunked(10, Fault::ShortChunk).thenClose(), failure(200, wordsText)},
        {"a cut chunk", whole().chunked(10).cutBodyAfter(8), failure(200, closedText)},
        {"a cut chunk, then a reset", whole().chunked(10).cutBodyAfter(8).thenReset(), failure(200, closedText)},
        {"a cut size of a chunk", whole().chunked(10).cutBodyAfter(1), failure(200, closedText)},
        {"chunks without separators", whole().chunked(10, Fault::NoSeparator), success(200)},
        {"no last chunk", whole().chunked(10, Fault::NoLastChunk).thenClose(), failure(200, wordsText)},
        {"packed, but not really", packed("not packed"), packing},
        // Qt does not miss the end of what is packed. What there is of it is no object.
        {"packed and cut", packed(gzipped(wholeBytes).chopped(30)), success(200)},
        {"packed, with a wrong checksum", packed(withWrongChecksum(gzipped(wholeBytes))), packing},
        {"packed a thousand times", bomb, packing},
    });
}

QList<ConnectionRow> harmlessRows()
{
    const FaultOutcome good = success(200, wholeBody());
    return inTwoParts({
        {"the body drips", whole().dripBody(1, 5), good},
        {"no length", whole().withoutContentLength(), good},
        {"chunks", whole().chunked(7), good},
        {"packed", packed(gzipped(wholeBytes)), good},
        {"deflated", deflated(wholeBytes), good},
        {"closes although it should stay", whole().thenClose(), good},
        {"a NUL byte in a header", whole().header("X-Odd", QByteArray("a\0b", 3)), good},
        {"a header of 60,000 bytes", whole().header("X-Long", QByteArray(60000, 'x')), good},
        // Nobody asked for another protocol; the status is no error all the same.
        {"another protocol", Reply::empty(101).header("Upgrade", "another").thenClose(), success(101)},
    });
}

QList<ConnectionRow> stalledRows()
{
    return {
        {"silence", Reply::never(), failure(0, stalledText)},
        {"the head drips", whole().dripHead(1, 60), failure(0, stalledText)},
        {"half a body, then silence", half(200).thenSilence(), failure(200, stalledText)},
        {"half a body of a 202, then silence", half(202).thenSilence(), success(202)},
    };
}

} // namespace faults
