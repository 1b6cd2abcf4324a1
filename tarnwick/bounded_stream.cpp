#include "bounded_stream.h"

#include <algorithm>
#include <poll.h>
#include <sys/socket.h>

namespace tarnwick {

BoundedStream::BoundedStream(socket_t socket, const ConnectionLimits& limits)
    : m_socket(socket),
      m_limits(limits),
      m_end(std::chrono::steady_clock::now() + limits.whole)
{
}

bool BoundedStream::is_readable() const
{
    return m_next < m_filled || waitFor(POLLIN);
}

bool BoundedStream::is_writable() const
{
    return waitFor(POLLOUT);
}

ssize_t BoundedStream::read(char* data, std::size_t size)
{
    if (m_next == m_filled && !refill()) {
        return -1;
    }
    const std::size_t count = std::min(size, m_filled - m_next);
    for (std::size_t index = 0; index < count; ++index) {
        data[index] = m_buffer.at(m_next++);
        if (!countHead(data[index])) {
            return -1;
        }
    }
    return static_cast<ssize_t>(count);
}

ssize_t BoundedStream::write(const char* data, std::size_t size)
{
    if (!waitFor(POLLOUT)) {
        return -1;
    }
    // As much as fits at once: with a visitor who does not read, waiting for the rest would outlast the limit.
    return ::send(m_socket, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
}

void BoundedStream::get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}

void BoundedStream::get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}

bool BoundedStream::waitFor(short event) const
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::duration_cast<milliseconds>(m_end - std::chrono::steady_clock::now());
    // With no time left, what can be done at once is still done.
    const milliseconds patience = std::clamp(left, milliseconds(0), m_limits.silence);
    pollfd waiting{m_socket, event, 0};
    return ::poll(&waiting, 1, static_cast<int>(patience.count())) > 0;
}

bool BoundedStream::refill()
{
    if (m_received >= m_limits.allBytes || !waitFor(POLLIN)) {
        return false;
    }
    const ssize_t count = ::recv(m_socket, m_buffer.data(), m_buffer.size(), 0);
    m_next = 0;
    m_filled = count > 0 ? static_cast<std::size_t>(count) : 0;
    m_received += m_filled;
    return m_filled > 0;
}

bool BoundedStream::countHead(char byte)
{
    if (m_headHasEnded) {
        return true;
    }
    constexpr std::uint32_t threeBytes = 0xffffffU;
    constexpr std::uint32_t emptyLine = 0x0a0d0aU; // the end of a line, and a line without anything
    m_lastBytes = ((m_lastBytes << 8U) | static_cast<unsigned char>(byte)) & threeBytes;
    m_headHasEnded = m_lastBytes == emptyLine;
    return ++m_headBytes <= m_limits.headBytes;
}

} // namespace tarnwick
