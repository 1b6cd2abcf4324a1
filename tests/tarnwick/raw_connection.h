#pragma once

#include <string>

namespace tarnwick::testing {

// A TCP connection to the service that sends exactly the given bytes.
class RawConnection
{
public:
    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    RawConnection(RawConnection&&) = delete;
    RawConnection& operator=(RawConnection&&) = delete;

    bool isOpen() const { return m_socket >= 0; }
    bool send(const std::string& bytes) const;
    // Waits a moment for the service to end the connection. True when it has.
    bool endsWithin(int milliseconds) const;
    // Everything until the service closes the connection, or what came within ten seconds.
    std::string receiveAll() const;

private:
    int m_socket = -1;
};

} // namespace tarnwick::testing
