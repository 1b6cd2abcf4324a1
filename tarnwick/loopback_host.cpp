#include "loopback_host.h"

#include "text.h"

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

bool isPortOrNothing(std::string_view text)
{
    if (text.empty()) {
        return true;
    }
    constexpr std::size_t longestPort = 5;
    const std::string_view digits = text.substr(1);
    return text.front() == ':' && !digits.empty() && digits.size() <= longestPort &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

bool isLoopbackHost(std::string_view host)
{
    constexpr std::array<std::string_view, 3> names = {"127.0.0.1", "localhost", "[::1]"};
    return std::any_of(names.begin(), names.end(), [host](std::string_view name) {
        return host.size() >= name.size() && equalIgnoringCase(host.substr(0, name.size()), name) &&
               isPortOrNothing(host.substr(name.size()));
    });
}

} // namespace tarnwick
