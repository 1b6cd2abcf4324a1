#include "recorded_request.h"

#include <algorithm>

namespace support {

namespace {

auto findHeader(const QList<RecordedRequest::Header>& headers, QByteArrayView name)
{
    return std::find_if(headers.cbegin(), headers.cend(), [name](const RecordedRequest::Header& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

QByteArray RecordedRequest::header(QByteArrayView name) const
{
    const auto found = findHeader(headers, name);
    return found == headers.cend() ? QByteArray() : found->second;
}

bool RecordedRequest::hasHeader(QByteArrayView name) const
{
    return findHeader(headers, name) != headers.cend();
}

QByteArray RecordedRequest::path() const
{
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? target : target.left(mark);
}

QByteArray RecordedRequest::query() const
{
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? QByteArray() : target.mid(mark + 1);
}

} // namespace support
