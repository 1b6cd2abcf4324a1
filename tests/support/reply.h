#pragma once

#include "reply_script.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>

#include <optional>
#include <utility>

namespace support {

/// What the scripted server answers: a value, built by one of the static functions and refined by the others,
/// each of which returns a changed copy: `Reply::json(200, "{}").delay(50).cutAfter(30)`.
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

    static Reply json(int status, const QByteArray& body);
    static Reply json(int status, const QJsonObject& body);
    static Reply text(int status, const QByteArray& body);
    static Reply html(int status, const QByteArray& body);
    static Reply empty(int status);
    static Reply redirect(int status, const QByteArray& location);
    /// A body of size bytes that is made while it is sent and never held in memory.
    static Reply huge(int status, qint64 size, const QByteArray& pattern = "0123456789abcdef");
    /// Exactly these bytes, then closed; with keepOpen() the connection goes on to the next request.
    static Reply raw(const QByteArray& bytes);
    static Reply closeWithoutAnswer();
    static Reply resetWithoutAnswer();
    /// Never answers, never closes.
    static Reply never();

    // The head.
    Reply reason(const QByteArray& phrase) const;
    /// Replaces every header of that name.
    Reply header(const QByteArray& name, const QByteArray& value) const;
    Reply addHeader(const QByteArray& name, const QByteArray& value) const;
    Reply setCookie(const QByteArray& cookie) const;
    /// Announces this length, whatever the body's length is.
    Reply contentLength(qint64 length) const;
    /// No length at all: the end of the connection is the end of the body.
    Reply withoutContentLength() const;
    /// Sends the body in chunks of that size; a huge body goes out as one chunk.
    Reply chunked(int chunkSize = 16, ChunkFault fault = ChunkFault::None) const;

    // The pace.
    /// Waits before the first byte.
    Reply delay(int ms) const;
    Reply drip(int bytesPerStep, int everyMs) const;
    Reply dripHead(int bytesPerStep, int everyMs) const;
    Reply dripBody(int bytesPerStep, int everyMs) const;
    /// Sends the head; the rest follows when the server is told to release it.
    Reply holdBody() const;

    // The end. A cut answer is closed unless one of the endings below says otherwise.
    /// Ends after that many bytes of the whole answer.
    Reply cutAfter(qint64 bytes) const;
    /// Ends after that many bytes of the body.
    Reply cutBodyAfter(qint64 bytes) const;
    /// Announces `Connection: close` and closes.
    Reply connectionClose() const;
    Reply keepOpen() const;
    Reply thenClose() const;
    Reply thenReset() const;
    Reply thenSilence() const;
    /// Announces keep-alive, yet closes the connection when it has been idle for that long.
    Reply keepAliveThenCloseIdle(int ms) const;

    ReplyScript script() const;
    /// Every byte of the answer, for building a raw reply out of others. Not for a huge one.
    QByteArray bytes() const;

private:
    enum class DripPart { None, Whole, Head, Body };

    Reply() = default;
    Reply withDrip(DripPart part, int bytesPerStep, int everyMs) const;
    Reply withEnding(Ending ending) const;
    void removeHeader(const QByteArray& name);
    QByteArray headerValue(const QByteArray& name) const;
    bool hasHeader(const QByteArray& name) const;
    bool mayHaveBody() const;
    QByteArray headBytes() const;
    QByteArray chunkedBody() const;
    Ending effectiveEnding() const;

    int m_status = 0; // 0: m_body is all there is
    QByteArray m_reason;
    QList<std::pair<QByteArray, QByteArray>> m_headers;
    QByteArray m_body;
    QByteArray m_pattern;
    qint64 m_patternSize = 0;
    bool m_automaticLength = true;
    int m_chunkSize = 0; // 0: not chunked
    ChunkFault m_chunkFault = ChunkFault::None;
    int m_delayMs = 0;
    DripPart m_dripPart = DripPart::None;
    int m_dripBytes = 0;
    int m_dripEveryMs = 0;
    bool m_holdsBody = false;
    qint64 m_cutAfter = -1;
    qint64 m_cutBodyAfter = -1;
    std::optional<Ending> m_ending;
    int m_idleMs = 0;
};

} // namespace support
