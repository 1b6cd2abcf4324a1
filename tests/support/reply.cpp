#include "reply.h"

#include "reason_phrase.h"

#include <QJsonDocument>

namespace support {

Reply Reply::json(int status, const QByteArray& body)
{
    Reply reply = text(status, body);
    return reply.header("Content-Type", "application/json");
}

Reply Reply::json(int status, const QJsonObject& body)
{
    return json(status, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

Reply Reply::text(int status, const QByteArray& body)
{
    Reply reply = empty(status);
    reply.m_body = body;
    return reply.header("Content-Type", "text/plain; charset=utf-8");
}

Reply Reply::html(int status, const QByteArray& body)
{
    return text(status, body).header("Content-Type", "text/html; charset=utf-8");
}

Reply Reply::empty(int status)
{
    Reply reply;
    reply.m_status = status;
    return reply;
}

Reply Reply::redirect(int status, const QByteArray& location)
{
    return empty(status).header("Location", location);
}

Reply Reply::huge(int status, qint64 size, const QByteArray& pattern)
{
    Reply reply = empty(status);
    reply.m_pattern = pattern;
    reply.m_patternSize = size;
    return reply.header("Content-Type", "application/octet-stream");
}

Reply Reply::raw(const QByteArray& bytes)
{
    Reply reply;
    reply.m_body = bytes;
    return reply.withEnding(Ending::Close);
}

Reply Reply::closeWithoutAnswer()
{
    return raw({});
}

Reply Reply::resetWithoutAnswer()
{
    return raw({}).thenReset();
}

Reply Reply::never()
{
    return raw({}).thenSilence();
}

Reply Reply::reason(const QByteArray& phrase) const
{
    Reply changed = *this;
    changed.m_reason = phrase;
    return changed;
}

Reply Reply::header(const QByteArray& name, const QByteArray& value) const
{
    Reply changed = *this;
    changed.removeHeader(name);
    changed.m_headers.append({name, value});
    return changed;
}

Reply Reply::addHeader(const QByteArray& name, const QByteArray& value) const
{
    Reply changed = *this;
    changed.m_headers.append({name, value});
    return changed;
}

Reply Reply::setCookie(const QByteArray& cookie) const
{
    return addHeader("Set-Cookie", cookie);
}

Reply Reply::contentLength(qint64 length) const
{
    return header("Content-Length", QByteArray::number(length));
}

Reply Reply::withoutContentLength() const
{
    Reply changed = *this;
    changed.removeHeader("Content-Length");
    changed.m_automaticLength = false;
    return changed;
}

Reply Reply::chunked(int chunkSize, ChunkFault fault) const
{
    Reply changed = header("Transfer-Encoding", "chunked");
    changed.m_chunkSize = qMax(1, chunkSize);
    changed.m_chunkFault = fault;
    return changed;
}

Reply Reply::delay(int ms) const
{
    Reply changed = *this;
    changed.m_delayMs = ms;
    return changed;
}

Reply Reply::drip(int bytesPerStep, int everyMs) const
{
    return withDrip(DripPart::Whole, bytesPerStep, everyMs);
}

Reply Reply::dripHead(int bytesPerStep, int everyMs) const
{
    return withDrip(DripPart::Head, bytesPerStep, everyMs);
}

Reply Reply::dripBody(int bytesPerStep, int everyMs) const
{
    return withDrip(DripPart::Body, bytesPerStep, everyMs);
}

Reply Reply::holdBody() const
{
    Reply changed = *this;
    changed.m_holdsBody = true;
    return changed;
}

Reply Reply::cutAfter(qint64 bytes) const
{
    Reply changed = *this;
    changed.m_cutAfter = bytes;
    return changed;
}

Reply Reply::cutBodyAfter(qint64 bytes) const
{
    Reply changed = *this;
    changed.m_cutBodyAfter = bytes;
    return changed;
}

Reply Reply::connectionClose() const
{
    return header("Connection", "close").thenClose();
}

Reply Reply::keepOpen() const
{
    return withEnding(Ending::NextRequest);
}

Reply Reply::thenClose() const
{
    return withEnding(Ending::Close);
}

Reply Reply::thenReset() const
{
    return withEnding(Ending::Reset);
}

Reply Reply::thenSilence() const
{
    return withEnding(Ending::Silence);
}

Reply Reply::keepAliveThenCloseIdle(int ms) const
{
    Reply changed = header("Connection", "keep-alive").withEnding(Ending::CloseWhenIdle);
    changed.m_idleMs = ms;
    return changed;
}

Reply Reply::withDrip(DripPart part, int bytesPerStep, int everyMs) const
{
    Reply changed = *this;
    changed.m_dripPart = part;
    changed.m_dripBytes = bytesPerStep;
    changed.m_dripEveryMs = everyMs;
    return changed;
}

Reply Reply::withEnding(Ending ending) const
{
    Reply changed = *this;
    changed.m_ending = ending;
    return changed;
}

void Reply::removeHeader(const QByteArray& name)
{
    m_headers.removeIf([&name](const auto& entry) { return entry.first.compare(name, Qt::CaseInsensitive) == 0; });
}

} // namespace support
