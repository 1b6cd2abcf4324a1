#include "httplib_adapter.h"

#include <utility>

namespace tarnwick {

namespace {

bool announcesBody(const httplib::Request& request)
{
    return request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
}

} // namespace

std::string rawPath(const httplib::Request& request)
{
    return request.target.substr(0, request.target.find('?'));
}

HttpRequest fromWire(const httplib::Request& request, std::string body)
{
    HttpRequest converted{request.method, rawPath(request), {}, {}, std::move(body)};
    if (const std::size_t mark = request.target.find('?'); mark != std::string::npos) {
        converted.query = request.target.substr(mark + 1);
    }
    for (const auto& [name, value] : request.headers) {
        converted.headers.emplace_back(name, value);
    }
    return converted;
}

void toWire(const HttpReply& reply, httplib::Response& response)
{
    // The library takes an unset status as 200, or 206 for a part of a file that was asked for.
    if (reply.status != 200) {
        response.status = reply.status;
    }
    for (const auto& [name, value] : reply.headers) {
        response.set_header(name, value);
    }
    response.set_content(reply.body, reply.contentType);
}

BodyReading readBody(const httplib::Request& request, const httplib::ContentReader& reader)
{
    BodyReading reading;
    std::size_t total = 0;
    const auto take = [&reading, &total](const char* data, std::size_t size) {
        total += size;
        if (total <= largestBody) {
            reading.body.append(data, size);
        }
        return total <= largestReadBody;
    };
    if (request.is_multipart_form_data()) {
        // The service has no use for this type; its parts are read only to reach the end of the request.
        reading.complete = reader([](const httplib::MultipartFormData&) { return true; }, take);
    } else if (announcesBody(request)) {
        reading.complete = reader(take);
    }
    reading.tooLarge = total > largestBody;
    return reading;
}

} // namespace tarnwick
