#pragma once

#include "recorded_request.h"

#include <optional>

namespace support {

/// Cuts the byte stream of one connection into requests. Bodies are delimited by Content-Length, which is the
/// only way in which the client's HTTP stack sends one.
class RequestReader
{
public:
    void feed(const QByteArray& bytes);
    /// The next complete request, if there is one.
    std::optional<RecordedRequest> next();
    /// True while a request has begun and not ended.
    bool isMidway() const;

private:
    QByteArray m_buffer;
};

} // namespace support
