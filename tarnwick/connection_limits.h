#pragma once

#include <chrono>
#include <cstddef>

namespace tarnwick {

// What one connection may take. The service's own replies and a browser's requests stay far below.
struct ConnectionLimits
{
    // Without a byte, before the request or within it.
    std::chrono::milliseconds silence{5000};
    // From the moment that a thread takes the connection to the last byte of the reply.
    std::chrono::milliseconds whole{15000};
    std::size_t headBytes = std::size_t{64} * 1024;
    std::size_t allBytes = std::size_t{8} * 1024 * 1024;
};

} // namespace tarnwick
