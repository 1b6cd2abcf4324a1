#include "http_message.h"

#include "text.h"

#include <algorithm>

namespace tarnwick {

std::string HttpRequest::header(std::string_view name) const
{
    for (const auto& [headerName, headerValue] : headers) {
        if (equalIgnoringCase(headerName, name)) {
            return headerValue;
        }
    }
    return {};
}

std::size_t HttpRequest::headerCount(std::string_view name) const
{
    return static_cast<std::size_t>(std::count_if(
        headers.begin(), headers.end(), [name](const auto& entry) { return equalIgnoringCase(entry.first, name); }));
}

bool isApiPath(std::string_view path)
{
    return path == "/api" || path.starts_with("/api/");
}

} // namespace tarnwick
