#pragma once

#include <QByteArray>

namespace support {

/// JSON with apostrophes instead of quotation marks, since moc misreads raw string literals.
inline QByteArray json(const char* text)
{
    return QByteArray(text).replace('\'', '"');
}

} // namespace support
