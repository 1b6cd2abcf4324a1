#pragma once

#include <QByteArray>

namespace support {

/// What happens to the connection after the last byte of an answer.
enum class Ending {
    NextRequest,   ///< stays open and serves the next request
    Close,         ///< closed in good order
    Reset,         ///< torn down with a TCP reset
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

} // namespace support
