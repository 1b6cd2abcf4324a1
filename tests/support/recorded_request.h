#pragma once

#include <QByteArray>
#include <QList>

#include <optional>
#include <utility>

namespace support {

/// One request as it came in from the wire. Nothing is decoded, trimmed or reordered beyond the split into fields.
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
    QByteArray header(const QByteArray& name) const;
    bool hasHeader(const QByteArray& name) const;
    /// The target up to the query.
    QByteArray path() const { return target.left(queryMark()); }
    /// The query without its question mark; empty when there is none.
    QByteArray query() const { return target.mid(queryMark() + 1); }

private:
    qsizetype queryMark() const { return target.contains('?') ? target.indexOf('?') : target.size(); }
};

/// Takes the first request off the byte stream of a connection, if it is complete. Bodies are delimited by
/// Content-Length, which is the only way in which the client's HTTP stack sends one.
std::optional<RecordedRequest> takeRequest(QByteArray& stream);

} // namespace support
