#include "request_reader.h"

namespace support {

namespace {

constexpr QByteArrayView endOfHead("\r\n\r\n");
constexpr QByteArrayView endOfLine("\r\n");

RecordedRequest readHead(const QByteArray& head)
{
    RecordedRequest request;
    qsizetype lineStart = 0;
    while (lineStart < head.size()) {
        const qsizetype lineEnd = head.indexOf(endOfLine, lineStart);
        const QByteArray line = head.mid(lineStart, lineEnd - lineStart);
        if (lineStart == 0) {
            // The target may hold anything but a space, so the last space is the one before the version.
            const qsizetype first = line.indexOf(' ');
            const qsizetype last = line.lastIndexOf(' ');
            request.method = line.left(first);
            if (first >= 0 && last > first) {
                request.target = line.mid(first + 1, last - first - 1);
                request.version = line.mid(last + 1);
            }
        } else {
            const qsizetype colon = line.indexOf(':');
            const QByteArray value = colon < 0 ? QByteArray() : line.mid(colon + 1).trimmed();
            request.headers.append({line.left(colon), value});
        }
        lineStart = lineEnd + endOfLine.size();
    }
    return request;
}

} // namespace

void RequestReader::feed(const QByteArray& bytes)
{
    m_buffer += bytes;
}

std::optional<RecordedRequest> RequestReader::next()
{
    const qsizetype headEnd = m_buffer.indexOf(endOfHead);
    if (headEnd < 0) {
        return std::nullopt;
    }
    RecordedRequest request = readHead(m_buffer.left(headEnd + endOfLine.size()));
    const qsizetype headSize = headEnd + endOfHead.size();
    const qsizetype bodySize = qMax(0, request.header("Content-Length").toInt());
    if (m_buffer.size() < headSize + bodySize) {
        return std::nullopt;
    }
    request.body = m_buffer.mid(headSize, bodySize);
    request.raw = m_buffer.left(headSize + bodySize);
    m_buffer.remove(0, headSize + bodySize);
    return request;
}

bool RequestReader::isMidway() const
{
    return !m_buffer.isEmpty();
}

} // namespace support
