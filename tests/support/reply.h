#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>

#include <optional>
#include <type_traits>
#include <utility>

namespace support {

/// What happens to the connection after the last byte of a reply.
enum class Ending {
    NextRequest,   ///< stays open and serves the next request
    Close,         ///< closed normally
    Reset,         ///< closed with a TCP reset
    Silence,       ///< stays open, but sends nothing any more
    CloseWhenIdle, ///< stays open for some time, then closed unless another request has arrived
};

/// Slows down the part of a reply between two offsets. Zero bytes per step means full speed.
struct DripPace
{
    qint64 from = 0;
    qint64 to = 0;
    qint64 bytes = 0;
    int everyMs = 0;
};

/// A reply as bytes, timing and ending: a connection can send it without any knowledge of HTTP.
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
    /// Bytes from here on are not sent; negative: all are sent.
    qint64 cutAt = -1;
    /// Bytes from here on are held until they are released; negative: none are held.
    qint64 holdAt = -1;

    /// How many bytes are sent.
    qint64 size() const;
    /// Up to maxSize bytes from the offset on; fewer at the boundaries of the three parts.
    QByteArray slice(qint64 offset, qint64 maxSize) const;
};

/// A reply of the scripted server. A value: made by one of the static functions, then refined by the others, each of
/// which returns a changed copy: `Reply::json(200, "{}").delay(50).cutBodyAfter(1)`.
class [[nodiscard]] Reply
{
public:
    /// Ways to break chunked transfer coding.
    enum class ChunkFault {
        None,
        BadSize,     ///< the second chunk's size is not a number
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
    /// A body of this size that is generated while it is sent and never completely in memory.
    static Reply huge(int status, qint64 size, const QByteArray& pattern = "0123456789abcdef")
    {
        return empty(status).with(&Reply::m_pattern, pattern).with(&Reply::m_patternSize, size);
    }
    /// Exactly these bytes, then closed; with keepOpen() the connection can be used for the next request.
    static Reply raw(const QByteArray& bytes) { return Reply().with(&Reply::m_body, bytes).thenClose(); }
    static Reply closeWithoutAnswer() { return raw({}); }
    static Reply resetWithoutAnswer() { return raw({}).thenReset(); }
    /// Neither replies nor closes.
    static Reply never() { return raw({}).thenSilence(); }

    // The head.
    /// Replaces a header with this name.
    Reply header(const QByteArray& name, const QByteArray& value) const;
    Reply setCookie(const QByteArray& cookie) const;
    /// Sends this length, whatever the length of the body is.
    Reply contentLength(qint64 length) const { return header("Content-Length", QByteArray::number(length)); }
    /// Without a length: the end of the connection is the end of the body.
    Reply withoutContentLength() const { return with(&Reply::m_hasLength, false).thenClose(); }
    /// Sends the body in chunks of this size; a huge body is sent as one chunk.
    Reply chunked(int chunkSize = 16, ChunkFault fault = ChunkFault::None) const;

    // The timing.
    /// Waits before the first byte.
    Reply delay(int ms) const { return with(&Reply::m_delayMs, ms); }
    Reply drip(int bytesPerStep, int everyMs) const { return dripPart(true, true, bytesPerStep, everyMs); }
    Reply dripBody(int bytesPerStep, int everyMs) const { return dripPart(false, true, bytesPerStep, everyMs); }
    /// Sends the head; the rest is sent when the server is asked to release it.
    Reply holdBody() const { return with(&Reply::m_holdsBody, true); }

    // The end.
    /// Closes after this many bytes of the body, unless one of the endings below is chosen.
    Reply cutBodyAfter(qint64 bytes) const { return with(&Reply::m_cutBodyAfter, bytes); }
    /// Sends `Connection: close` and closes.
    Reply connectionClose() const { return header("Connection", "close").thenClose(); }
    Reply keepOpen() const { return with(&Reply::m_ending, Ending::NextRequest); }
    Reply thenClose() const { return with(&Reply::m_ending, Ending::Close); }
    Reply thenReset() const { return with(&Reply::m_ending, Ending::Reset); }
    Reply thenSilence() const { return with(&Reply::m_ending, Ending::Silence); }
    /// Uses keep-alive, but closes the connection when it has been idle for this time.
    Reply keepAliveThenCloseIdle(int ms) const;

    ReplyScript script() const;
    /// All bytes of the reply, to build a raw reply from. Not for a huge one.
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

    int m_status = 0; // 0: only m_body is sent
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
