#include "request_log.h"

namespace tarnwick {

namespace {

constexpr std::size_t longestPath = 200;

std::string printable(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char character : text.substr(0, longestPath)) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > 0x20U && byte < 0x7fU) {
            result += character;
        } else {
            result += "\\x";
            result += digits[byte >> 4U];
            result += digits[byte & 0x0fU];
        }
    }
    return result.empty() ? "-" : result;
}

} // namespace

std::string requestLogLine(std::string_view method, std::string_view path, int status,
                           std::chrono::milliseconds duration)
{
    return printable(method) + " " + printable(path) + " " + std::to_string(status) + " " +
           std::to_string(duration.count()) + " ms";
}

} // namespace tarnwick
