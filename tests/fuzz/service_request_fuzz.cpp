// Sends any requests to the stand-in service, one after the other, without the network. An input is HTTP as a person
// would type it, with "====" between two requests; {code}, {token} and {form} stand for what earlier replies gave.
#include "service.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void demand(bool holds, const char* what, const std::string& detail)
{
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "does not hold: %s: %s\n", what, detail.c_str()));
        std::abort();
    }
}

/// Takes the text up to the mark off the front; all of it when the mark is not there.
std::string_view takeUntil(std::string_view& text, std::string_view mark)
{
    const std::size_t end = text.find(mark);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + mark.size());
    return taken;
}

/// What a visitor keeps from one request to the next.
class Visitor
{
public:
    std::string filledIn(std::string_view typed) const
    {
        std::string text(typed);
        replace(text, "{code}", code);
        replace(text, "{token}", token);
        replace(text, "{form}", form);
        return text;
    }

    void learn(const tarnwick::HttpReply& reply)
    {
        for (const auto& [name, value] : reply.headers) {
            if (name == "Set-Cookie") {
                form = value.substr(value.find('=') + 1, value.find(';') - value.find('=') - 1);
            }
        }
        const auto object = nlohmann::json::parse(reply.body, nullptr, false);
        if (object.is_object()) {
            code = object.value("code", code);
            token = object.value("access_token", token);
        }
    }

private:
    static void replace(std::string& text, std::string_view name, const std::string& value)
    {
        for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size())) {
            text.replace(at, name.size(), value);
        }
    }

    std::string code;
    std::string token;
    std::string form;
};

tarnwick::HttpRequest requestOf(std::string_view typed)
{
    tarnwick::HttpRequest request;
    std::string_view line = takeUntil(typed, "\n");
    request.method = takeUntil(line, " ");
    request.path = takeUntil(line, "?");
    request.query = line;
    for (line = takeUntil(typed, "\n"); !line.empty(); line = takeUntil(typed, "\n")) {
        const std::string_view name = takeUntil(line, ": ");
        request.headers.emplace_back(name, line);
    }
    request.body = typed;
    return request;
}

void check(const tarnwick::HttpRequest& request, const tarnwick::HttpReply& reply)
{
    demand(reply.status >= 200 && reply.status < 500, "no fault inside", std::to_string(reply.status) + reply.body);
    for (const auto& [name, value] : reply.headers) {
        demand(value.find_first_of("\r\n") == std::string::npos, "a header is one line",
               std::string(name).append(": ").append(value));
    }
    if (tarnwick::isApiPath(request.path)) {
        demand(nlohmann::json::parse(reply.body, nullptr, false).is_object(), "an object for a program", reply.body);
    } else if (reply.contentType.starts_with("text/html")) {
        demand(reply.body.find("<fuzz") == std::string::npos, "a page has no tags of others", reply.body);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(data), size);
    tarnwick::Service service(":memory:");
    Visitor visitor;
    constexpr int mostRequests = 12;
    for (int count = 0; count < mostRequests && !input.empty(); ++count) {
        const tarnwick::HttpRequest request = requestOf(visitor.filledIn(takeUntil(input, "\n====\n")));
        const tarnwick::HttpReply reply = service.handle(request);
        check(request, reply);
        visitor.learn(reply);
    }
    return 0;
}
