#pragma once

#include "http_message.h"

#include <string>

namespace tarnwick {

// JSON under /api/, a page elsewhere.
HttpReply errorReply(const std::string& path, int status, const std::string& title, const std::string& message);

// For a request that did not get as far as the service's own code: too long, too large, not HTTP.
HttpReply protocolErrorReply(const std::string& path, int status);

} // namespace tarnwick
