#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <utility>

namespace support {

/// One request as it came in from the wire. Nothing is decoded, trimmed or reordered beyond the split into
/// fields.
struct RecordedRequest
{
    using Header = std::pair<QByteArray, QByteArray>;

    /// Every byte of the request, head and body.
    QByteArray raw;
    QByteArray method;
    /// As sent, with the query.
    QByteArray target;
    QByteArray version;
    /// In wire order; repeated names stay repeated.
    QList<Header> headers;
    QByteArray body;
    /// The first connection of a server is 1; requests that share a kept-alive connection share the number.
    int connection = 0;

    /// The value of the first header of that name in any letter case; empty when there is none.
    QByteArray header(QByteArrayView name) const;
    bool hasHeader(QByteArrayView name) const;
    /// The target up to the query.
    QByteArray path() const;
    /// The query without its question mark; empty when there is none.
    QByteArray query() const;
};

} // namespace support
