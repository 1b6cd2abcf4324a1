#pragma once

class QAbstractSocket;

namespace support {

/// Tears the connection down with a TCP reset instead of an orderly end. Bytes not sent yet are lost.
void resetConnection(QAbstractSocket* socket);

} // namespace support
