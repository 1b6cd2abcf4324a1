#pragma once

#include <QByteArray>
#include <QList>

#include <optional>
#include <utility>

namespace support {

/// One request as received. Nothing is decoded, trimmed or reordered, only split into fields.
struct RecordedRequest
{
    using Header = std::pair<QByteArray, QByteArray>;

    /// Every byte of the request, head and body.
    QByteArray raw;
    QByteArray method;
    /// As sent, with the query.
    QByteArray target;
    QByteArray version;
    /// In the order received; a repeated name is in the list several times.
    QList<Header> headers;
    QByteArray body;
    /// The first connection of a server is 1. Requests on the same kept-alive connection have the same number.
    int connection = 0;

    /// The value of the first header with this name in any letter case; empty if there is none.
    QByteArray header(const QByteArray& name) const;
    bool hasHeader(const QByteArray& name) const;
    /// The target without the query.
    QByteArray path() const { return target.left(queryMark()); }
    /// The query without its question mark; empty if there is none.
    QByteArray query() const { return target.mid(queryMark() + 1); }

private:
    qsizetype queryMark() const { return target.contains('?') ? target.indexOf('?') : target.size(); }
};

/// Removes the first request from the byte stream of a connection, if it is complete. Bodies are delimited by
/// Content-Length, because the client's HTTP stack does not send them in another way.
std::optional<RecordedRequest> takeRequest(QByteArray& stream);

} // namespace support
