#include "system_socket.h"

#if defined(Q_OS_UNIX)
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#endif

namespace support {

#if defined(Q_OS_UNIX)

bool SystemSocket::isSupported()
{
    return true;
}

SystemSocket::SystemSocket(quint16 port) : m_handle(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // The listener's backlog completes the connection, so this does not wait for the server's event loop.
    if (::connect(m_handle, static_cast<const sockaddr*>(static_cast<const void*>(&address)), sizeof address) != 0) {
        qFatal("No connection to port %d", int(port));
    }
}

SystemSocket::~SystemSocket()
{
    ::close(m_handle);
}

void SystemSocket::send(const QByteArray& bytes) const
{
    if (::send(m_handle, bytes.constData(), static_cast<size_t>(bytes.size()), 0) != bytes.size()) {
        qFatal("Cannot send to the scripted server");
    }
}

SystemSocket::State SystemSocket::readMore()
{
    // The system reports an ending once only; so it is kept.
    while (m_state == State::Open) {
        std::array<char, 4096> buffer = {};
        const ssize_t count = ::recv(m_handle, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count > 0) {
            m_received.append(buffer.data(), count);
        } else if (count == 0) {
            m_state = State::Closed;
        } else if (errno == ECONNRESET) {
            m_state = State::Reset;
        } else {
            break;
        }
    }
    return m_state;
}

#else

bool SystemSocket::isSupported()
{
    return false;
}

SystemSocket::SystemSocket(quint16) {}
SystemSocket::~SystemSocket() = default;
void SystemSocket::send(const QByteArray&) const {}

SystemSocket::State SystemSocket::readMore()
{
    return State::Open;
}

#endif

QByteArray SystemSocket::received() const
{
    return m_received;
}

} // namespace support
