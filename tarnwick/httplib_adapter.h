#pragma once

#include "http_message.h"

#include <httplib.h>

#include <cstddef>
#include <string>

namespace tarnwick {

inline constexpr std::size_t largestBody = std::size_t{64} * 1024;
// Up to here a body that is too large is read and thrown away, so that its sender gets to read the answer.
inline constexpr std::size_t largestReadBody = std::size_t{1024} * 1024;

// The path as it was sent, without its query and with its escapes.
std::string rawPath(const httplib::Request& request);

HttpRequest fromWire(const httplib::Request& request, std::string body);

void toWire(const HttpReply& reply, httplib::Response& response);

struct BodyReading
{
    std::string body;
    bool complete = true;
    bool tooLarge = false;
};

BodyReading readBody(const httplib::Request& request, const httplib::ContentReader& reader);

} // namespace tarnwick
