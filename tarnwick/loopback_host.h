#pragma once

#include <string_view>

namespace tarnwick {

// True for a Host header that names this machine itself ("127.0.0.1:8080", "localhost", "[::1]:8080"). A web
// page of another name that resolves to 127.0.0.1 must not reach the service with its visitor's browser.
bool isLoopbackHost(std::string_view host);

} // namespace tarnwick
