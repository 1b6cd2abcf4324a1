#pragma once

#include <QByteArray>

namespace support {

/// The customary phrase after a status code; a made-up one for codes that have none.
QByteArray reasonPhrase(int status);

} // namespace support
