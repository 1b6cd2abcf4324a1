#include "recorded_request.h"

#include <algorithm>

namespace support {

namespace {

auto findHeader(const QList<RecordedRequest::Header>& headers, const QByteArray& name)
{
    return std::find_if(headers.cbegin(), headers.cend(), [&name](const RecordedRequest::Header& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

QByteArray RecordedRequest::header(const QByteArray& name) const
{
    const auto found = findHeader(headers, name);
    return found == headers.cend() ? QByteArray() : found->second;
}

bool RecordedRequest::hasHeader(const QByteArray& name) const
{
    return findHeader(headers, name) != headers.cend();
}

std::optional<RecordedRequest> takeRequest(QByteArray& stream)
{
    const qsizetype headSize = stream.indexOf("\r\n\r\n");
    if (headSize < 0) {
        return std::nullopt;
    }
    RecordedRequest request;
    const auto lines = stream.first(headSize).replace("\r\n", "\n").split('\n');
    // The target may contain anything except a space, so the last space is before the version.
    const QByteArray& first = lines.constFirst();
    const qsizetype targetAt = first.indexOf(' ') + 1;
    const qsizetype versionAt = first.lastIndexOf(' ') + 1;
    request.method = first.left(targetAt - 1);
    request.target = first.mid(targetAt, versionAt - 1 - targetAt);
    request.version = first.mid(versionAt);
    for (qsizetype number = 1; number < lines.size(); ++number) {
        const QByteArray& line = lines.at(number);
        const qsizetype colon = line.indexOf(':');
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    const qsizetype bodyAt = headSize + 4;
    const qsizetype size = bodyAt + request.header("Content-Length").toInt();
    if (stream.size() < size) {
        return std::nullopt;
    }
    request.raw = stream.first(size);
    request.body = request.raw.mid(bodyAt);
    stream.remove(0, size);
    return request;
}

} // namespace support
