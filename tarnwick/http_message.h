#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

// A request as the service's own code sees it, whichever library read it from the wire.
struct HttpRequest
{
    std::string method;
    std::string path;
    std::string query;
    HttpHeaders headers;
    std::string body;

    // Empty text when the header is missing; the first value when it comes more than once.
    std::string header(std::string_view name) const;
    std::size_t headerCount(std::string_view name) const;
};

struct HttpReply
{
    int status = 200;
    std::string contentType;
    std::string body;
    HttpHeaders headers;
};

// True where a program reads the answer, so that errors are JSON; everywhere else a person does.
bool isApiPath(std::string_view path);

} // namespace tarnwick
