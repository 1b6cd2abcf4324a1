#include "reply.h"

#include <algorithm>

namespace support {

qint64 ReplyScript::size() const
{
    const qint64 whole = prefix.size() + patternSize + suffix.size();
    return cutAt < 0 ? whole : qMin(cutAt, whole);
}

QByteArray ReplyScript::slice(qint64 offset, qint64 maxSize) const
{
    const qint64 wanted = qMin(maxSize, size() - offset);
    const qint64 inPattern = offset - prefix.size();
    if (inPattern < 0) {
        return prefix.mid(offset, wanted);
    }
    if (inPattern >= patternSize) {
        return suffix.mid(inPattern - patternSize, wanted);
    }
    const qint64 taken = qMin(wanted, patternSize - inPattern);
    const qint64 phase = inPattern % pattern.size();
    return pattern.repeated((phase + taken) / pattern.size() + 1).mid(phase, taken);
}

Reply Reply::withBody(int status, const QByteArray& body, const QByteArray& contentType)
{
    return empty(status).with(&Reply::m_body, body).header("Content-Type", contentType);
}

Reply Reply::header(const QByteArray& name, const QByteArray& value) const
{
    Reply changed = *this;
    changed.m_headers.removeIf([&name](const auto& entry) { return entry.first == name; });
    changed.m_headers.append({name, value});
    return changed;
}

Reply Reply::setCookie(const QByteArray& cookie) const
{
    Reply changed = *this;
    changed.m_headers.append({"Set-Cookie", cookie});
    return changed;
}

Reply Reply::chunked(int chunkSize, ChunkFault fault) const
{
    return header("Transfer-Encoding", "chunked")
        .with(&Reply::m_chunkSize, chunkSize)
        .with(&Reply::m_chunkFault, fault);
}

Reply Reply::keepAliveThenCloseIdle(int ms) const
{
    return header("Connection", "keep-alive").with(&Reply::m_ending, Ending::CloseWhenIdle).with(&Reply::m_idleMs, ms);
}

Reply Reply::dripPart(bool inHead, bool inBody, int bytesPerStep, int everyMs) const
{
    return with(&Reply::m_drip, {.inHead = inHead, .inBody = inBody, .bytes = bytesPerStep, .everyMs = everyMs});
}

bool Reply::hasHeader(const QByteArray& name) const
{
    return std::any_of(m_headers.cbegin(), m_headers.cend(),
                       [&name](const auto& entry) { return entry.first == name; });
}

ReplyScript Reply::script() const
{
    ReplyScript script;
    script.prefix = headBytes();
    const qint64 headSize = script.prefix.size();
    if (m_chunkSize > 0 && m_patternSize > 0) {
        script.prefix += QByteArray::number(m_patternSize, 16) + "\r\n";
        script.suffix = "\r\n0\r\n\r\n";
    } else {
        script.prefix += m_chunkSize > 0 ? chunkedBody() : m_body;
    }
    script.pattern = m_pattern;
    script.patternSize = m_patternSize;
    script.cutAt = m_cutBodyAfter < 0 ? -1 : headSize + m_cutBodyAfter;
    script.holdAt = m_holdsBody && headSize > 0 ? headSize : -1;
    script.delayMs = m_delayMs;
    // After a cut or a broken chunk, only the end of the connection shows the client that no more data follows.
    const bool isBroken = m_cutBodyAfter >= 0 || m_chunkFault != ChunkFault::None;
    script.ending = m_ending.value_or(isBroken ? Ending::Close : Ending::NextRequest);
    script.idleMs = m_idleMs;
    script.drip = {.from = m_drip.inHead ? 0 : headSize,
                   .to = m_drip.inBody ? script.size() : headSize,
                   .bytes = m_drip.bytes,
                   .everyMs = m_drip.everyMs};
    return script;
}

QByteArray Reply::headBytes() const
{
    if (m_status == 0) {
        return {};
    }
    QByteArray head = "HTTP/1.1 " + QByteArray::number(m_status) + " Scripted\r\n";
    for (const auto& [name, value] : m_headers) {
        head += name + ": " + value + "\r\n";
    }
    const qint64 bodySize = m_body.size() + m_patternSize;
    const bool mayHaveBody = m_status >= 200 && m_status != 204 && m_status != 304;
    if (m_hasLength && m_chunkSize == 0 && !hasHeader("Content-Length") && (mayHaveBody || bodySize > 0)) {
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
        if (m_chunkFault == ChunkFault::ShortChunk && isLast) {
            return wire + QByteArray::number(chunk.size() + 100, 16) + "\r\n" + chunk;
        }
        const bool hasSize = m_chunkFault != ChunkFault::BadSize || offset == 0;
        wire += (hasSize ? QByteArray::number(chunk.size(), 16) : QByteArray("no-size")) + "\r\n" + chunk;
        if (m_chunkFault != ChunkFault::NoSeparator) {
            wire += "\r\n";
        }
    }
    return m_chunkFault == ChunkFault::NoLastChunk ? wire : wire + "0\r\n\r\n";
}

} // namespace support
