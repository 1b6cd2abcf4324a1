#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>

#include <optional>
#include <type_traits>
#include <utility>

namespace support {

/// What happens to the connection after the last byte of an answer.
enum class Ending {
    NextRequest,   ///< stays open and serves the next request
    Close,         ///< closed in good order
    Reset,         ///< closed with a TCP reset
    Silence,       ///< stays open, but nothing more is ever answered on it
    CloseWhenIdle, ///< stays open for a while, then closed unless a request has come in
};

/// Slows down the part of an answer between two offsets. No bytes per step means full speed.
struct DripPace
{
    qint64 from = 0;
    qint64 to = 0;
    qint64 bytes = 0;
    int everyMs = 0;
};

/// A reply broken down to bytes, pace and ending: what a connection plays without knowing any HTTP.
struct ReplyScript
{
    /// The bytes are the prefix, then the pattern repeated and cut to patternSize, then the suffix.
    QByteArray prefix;
    QByteArray pattern;
    qint64 patternSize = 0;
    QByteArray suffix;

    int delayMs = 0;
    DripPace drip;
    Ending ending = Ending::NextRequest;
    int idleMs = 0;
    /// Bytes from here on are not sent; negative means all are.
    qint64 cutAt = -1;
    /// Bytes from here on wait until they are asked for; negative means none do.
    qint64 holdAt = -1;

    /// How many bytes go out.
    qint64 size() const;
    /// Up to maxSize bytes from the offset on. Shorter than asked for where two of the three parts meet.
    QByteArray slice(qint64 offset, qint64 maxSize) const;
};

/// What the scripted server answers: a value, built by one of the static functions and refined by the others,
/// each of which returns a changed copy: `Reply::json(200, "{}").delay(50).cutBodyAfter(1)`.
class [[nodiscard]] Reply
{
public:
    /// Ways to break chunked transfer coding.
    enum class ChunkFault {
        None,
        BadSize,     ///< the second chunk's size is no number
        ShortChunk,  ///< the last chunk announces more bytes than it has
        NoSeparator, ///< the chunk data is not followed by a line end
        NoLastChunk, ///< the empty chunk that ends the body is missing
    };

    static Reply json(int status, const QByteArray& body) { return withBody(status, body, "application/json"); }
    static Reply json(int status, const QJsonObject& body)
    {
        return json(status, QJsonDocument(body).toJson(QJsonDocument::Compact));
    }
    static Reply text(int status, const QByteArray& body) { return withBody(status, body, "text/plain"); }
    static Reply html(int status, const QByteArray& body) { return withBody(status, body, "text/html"); }
    static Reply empty(int status) { return Reply().with(&Reply::m_status, status); }
    static Reply redirect(int status, const QByteArray& location) { return empty(status).header("Location", location); }
    /// A body of size bytes that is made while it is sent and never held in memory.
    static Reply huge(int status, qint64 size, const QByteArray& pattern = "0123456789abcdef")
    {
        return empty(status).with(&Reply::m_pattern, pattern).with(&Reply::m_patternSize, size);
    }
    /// Exactly these bytes, then closed; with keepOpen() the connection goes on to the next request.
    static Reply raw(const QByteArray& bytes) { return Reply().with(&Reply::m_body, bytes).thenClose(); }
    static Reply closeWithoutAnswer() { return raw({}); }
    static Reply resetWithoutAnswer() { return raw({}).thenReset(); }
    /// Never answers, never closes.
    static Reply never() { return raw({}).thenSilence(); }

    // The head.
    /// Replaces a header of that name.
    Reply header(const QByteArray& name, const QByteArray& value) const;
    Reply setCookie(const QByteArray& cookie) const;
    /// Announces this length, whatever the body's length is.
    Reply contentLength(qint64 length) const { return header("Content-Length", QByteArray::number(length)); }
    /// No length at all: the end of the connection is the end of the body.
    Reply withoutContentLength() const { return with(&Reply::m_hasLength, false).thenClose(); }
    /// Sends the body in chunks of that size; a huge body goes out as one chunk.
    Reply chunked(int chunkSize = 16, ChunkFault fault = ChunkFault::None) const;

    // The pace.
    /// Waits before the first byte.
    Reply delay(int ms) const { return with(&Reply::m_delayMs, ms); }
    Reply drip(int bytesPerStep, int everyMs) const { return dripPart(true, true, bytesPerStep, everyMs); }
    Reply dripHead(int bytesPerStep, int everyMs) const { return dripPart(true, false, bytesPerStep, everyMs); }
    Reply dripBody(int bytesPerStep, int everyMs) const { return dripPart(false, true, bytesPerStep, everyMs); }
    /// Sends the head; the rest follows when the server is told to release it.
    Reply holdBody() const { return with(&Reply::m_holdsBody, true); }

    // The end.
    /// Closes after that many bytes of the body, unless one of the endings below says otherwise.
    Reply cutBodyAfter(qint64 bytes) const { return with(&Reply::m_cutBodyAfter, bytes); }
    /// Announces `Connection: close` and closes.
    Reply connectionClose() const { return header("Connection", "close").thenClose(); }
    Reply keepOpen() const { return with(&Reply::m_ending, Ending::NextRequest); }
    Reply thenClose() const { return with(&Reply::m_ending, Ending::Close); }
    Reply thenReset() const { return with(&Reply::m_ending, Ending::Reset); }
    Reply thenSilence() const { return with(&Reply::m_ending, Ending::Silence); }
    /// Announces keep-alive, yet closes the connection when it has been idle for that long.
    Reply keepAliveThenCloseIdle(int ms) const;

    ReplyScript script() const;
    /// Every byte of the answer, for building a raw reply out of others. Not for a huge one.
    QByteArray bytes() const { return script().prefix; }

private:
    struct Drip
    {
        bool inHead = false;
        bool inBody = false;
        int bytes = 0;
        int everyMs = 0;
    };

    Reply() = default;
    static Reply withBody(int status, const QByteArray& body, const QByteArray& contentType);
    template <typename Value>
    Reply with(Value Reply::*member, const std::type_identity_t<Value>& value) const
    {
        Reply changed = *this;
        changed.*member = value;
        return changed;
    }
    Reply dripPart(bool inHead, bool inBody, int bytesPerStep, int everyMs) const;
    bool hasHeader(const QByteArray& name) const;
    QByteArray headBytes() const;
    QByteArray chunkedBody() const;

    int m_status = 0; // 0: m_body is all there is
    QList<std::pair<QByteArray, QByteArray>> m_headers;
    QByteArray m_body;
    QByteArray m_pattern;
    qint64 m_patternSize = 0;
    bool m_hasLength = true;
    int m_chunkSize = 0; // 0: not chunked
    ChunkFault m_chunkFault = ChunkFault::None;
    int m_delayMs = 0;
    Drip m_drip;
    bool m_holdsBody = false;
    qint64 m_cutBodyAfter = -1;
    std::optional<Ending> m_ending;
    int m_idleMs = 0;
};

} // namespace support
