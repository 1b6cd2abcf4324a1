// How a reply becomes bytes: the part of Reply that knows the HTTP syntax.
#include "reason_phrase.h"
#include "reply.h"

#include <algorithm>

namespace support {

ReplyScript Reply::script() const
{
    ReplyScript script;
    script.prefix = headBytes();
    const qint64 headSize = script.prefix.size();
    const bool isHuge = m_patternSize > 0;
    if (m_chunkSize > 0 && isHuge) {
        script.prefix += QByteArray::number(m_patternSize, 16) + "\r\n";
        script.suffix = "\r\n0\r\n\r\n";
    } else if (m_chunkSize > 0) {
        script.prefix += chunkedBody();
    } else {
        script.prefix += m_body;
    }
    script.pattern = m_pattern.isEmpty() ? QByteArray(1, '.') : m_pattern;
    script.patternSize = m_patternSize;

    script.cutAt = m_cutBodyAfter < 0 ? m_cutAfter : headSize + m_cutBodyAfter;
    script.holdAt = m_holdsBody && headSize > 0 ? headSize : -1;
    script.delayMs = m_delayMs;
    script.ending = effectiveEnding();
    script.idleMs = m_idleMs;
    if (m_dripPart != DripPart::None) {
        script.drip.from = m_dripPart == DripPart::Body ? headSize : 0;
        script.drip.to = m_dripPart == DripPart::Head ? headSize : script.size();
        script.drip.bytes = qMax(1, m_dripBytes);
        script.drip.everyMs = m_dripEveryMs;
    }
    return script;
}

QByteArray Reply::bytes() const
{
    const ReplyScript whole = script();
    QByteArray bytes;
    while (bytes.size() < whole.size()) {
        bytes += whole.slice(bytes.size(), whole.size());
    }
    return bytes;
}

QByteArray Reply::headerValue(const QByteArray& name) const
{
    const auto found = std::find_if(m_headers.cbegin(), m_headers.cend(), [&name](const auto& entry) {
        return entry.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == m_headers.cend() ? QByteArray() : found->second;
}

bool Reply::hasHeader(const QByteArray& name) const
{
    return std::any_of(m_headers.cbegin(), m_headers.cend(),
                       [&name](const auto& entry) { return entry.first.compare(name, Qt::CaseInsensitive) == 0; });
}

bool Reply::mayHaveBody() const
{
    return m_status >= 200 && m_status != 204 && m_status != 304;
}

QByteArray Reply::headBytes() const
{
    if (m_status == 0) {
        return {};
    }
    const QByteArray phrase = m_reason.isNull() ? reasonPhrase(m_status) : m_reason;
    QByteArray head = "HTTP/1.1 " + QByteArray::number(m_status) + ' ' + phrase + "\r\n";
    for (const auto& [name, value] : m_headers) {
        head += name + ": " + value + "\r\n";
    }
    const qint64 bodySize = m_body.size() + m_patternSize;
    const bool isFramed = m_chunkSize > 0 || hasHeader("Content-Length");
    if (m_automaticLength && !isFramed && (mayHaveBody() || bodySize > 0)) {
        head += "Content-Length: " + QByteArray::number(bodySize) + "\r\n";
    }
    return head + "\r\n";
}

QByteArray Reply::chunkedBody() const
{
    QByteArray wire;
    for (qsizetype offset = 0; offset < m_body.size(); offset += m_chunkSize) {
        const QByteArray chunk = m_body.mid(offset, m_chunkSize);
        const bool isLast = offset + m_chunkSize >= m_body.size();
        if (m_chunkFault == ChunkFault::BadSize && offset > 0) {
            wire += "no-size";
        } else if (m_chunkFault == ChunkFault::ShortChunk && isLast) {
            return wire + QByteArray::number(chunk.size() + 100, 16) + "\r\n" + chunk;
        } else {
            wire += QByteArray::number(chunk.size(), 16);
        }
        wire += "\r\n" + chunk;
        if (m_chunkFault != ChunkFault::NoSeparator) {
            wire += "\r\n";
        }
    }
    return m_chunkFault == ChunkFault::NoLastChunk ? wire : wire + "0\r\n\r\n";
}

Ending Reply::effectiveEnding() const
{
    if (m_ending) {
        return *m_ending;
    }
    // Without a length, and after a cut or a broken chunk, only the end of the connection tells the client
    // that no more is coming.
    const bool isCut = m_cutAfter >= 0 || m_cutBodyAfter >= 0;
    const bool isUnframed = m_chunkSize == 0 && !m_automaticLength && !hasHeader("Content-Length") && mayHaveBody();
    const bool announcesClose = headerValue("Connection").compare("close", Qt::CaseInsensitive) == 0;
    const bool closes = isCut || isUnframed || announcesClose || m_chunkFault != ChunkFault::None;
    return closes ? Ending::Close : Ending::NextRequest;
}

} // namespace support
