#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace tarnwick {

using LogSink = std::function<void(const std::string& line)>;

// "GET /api/pc/link/poll 202 1 ms". The path without its query, which may hold a link code; what could break
// or forge a line of the log is written as \xNN.
std::string requestLogLine(std::string_view method, std::string_view path, int status,
                           std::chrono::milliseconds duration);

} // namespace tarnwick
