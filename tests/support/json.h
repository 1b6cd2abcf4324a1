#pragma once

#include <QByteArray>

namespace support {

/// JSON with its quotation marks written as apostrophes. (Raw string literals would do, but moc misreads them.)
inline QByteArray json(const char* text)
{
    return QByteArray(text).replace('\'', '"');
}

} // namespace support
