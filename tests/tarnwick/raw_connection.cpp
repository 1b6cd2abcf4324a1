#include "raw_connection.h"

#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tarnwick::testing {

RawConnection::RawConnection(int port) : m_socket(socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // The socket interface takes every kind of address as this one.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(m_socket);
        m_socket = -1;
    }
}

RawConnection::~RawConnection()
{
    if (isOpen()) {
        close(m_socket);
    }
}

bool RawConnection::send(const std::string& bytes) const
{
    return ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool RawConnection::endsWithin(int milliseconds) const
{
    pollfd waiting{m_socket, POLLRDHUP, 0};
    return poll(&waiting, 1, milliseconds) > 0;
}

std::string RawConnection::receiveAll() const
{
    constexpr int patienceMs = 10000;
    std::string received;
    std::array<char, 4096> buffer{};
    pollfd waiting{m_socket, POLLIN, 0};
    while (poll(&waiting, 1, patienceMs) > 0) {
        const ssize_t size = recv(m_socket, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            break;
        }
        received.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return received;
}

} // namespace tarnwick::testing
