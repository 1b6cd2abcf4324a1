#include "socket_reset.h"

#include <QAbstractSocket>

#if defined(Q_OS_WIN)
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

namespace support {

void resetConnection(QAbstractSocket* socket)
{
    // abort() alone still closes in good order when everything has been read and sent. A linger time of zero
    // is what turns the close into a reset.
    linger lingering = {};
    lingering.l_onoff = 1;
    lingering.l_linger = 0;
#if defined(Q_OS_WIN)
    ::setsockopt(static_cast<SOCKET>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<const char*>(&lingering), sizeof lingering);
#else
    ::setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &lingering, sizeof lingering);
#endif
    socket->abort();
}

} // namespace support
