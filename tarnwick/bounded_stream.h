#pragma once

#include "connection_limits.h"

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace tarnwick {

// One connection within its limits; beyond them it reads and writes no more.
class BoundedStream : public httplib::Stream
{
public:
    BoundedStream(socket_t socket, const ConnectionLimits& limits);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* data, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    // Nobody asks for these: the service listens on one address, and whoever connects is on this machine.
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return m_socket; }

private:
    bool waitFor(short event) const;
    bool refill();
    // False when the head has become too long with this byte.
    bool countHead(char byte);

    socket_t m_socket;
    ConnectionLimits m_limits;
    std::chrono::steady_clock::time_point m_end;
    std::array<char, 4096> m_buffer{};
    std::size_t m_next = 0;
    std::size_t m_filled = 0;
    std::size_t m_received = 0;
    std::size_t m_headBytes = 0;
    std::uint32_t m_lastBytes = 0;
    bool m_headHasEnded = false;
};

} // namespace tarnwick
