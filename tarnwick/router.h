#pragma once

#include "http_message.h"
#include "storage.h"

namespace tarnwick {

// Finds the handler of a request and makes every check that all handlers need: the host, the method, the
// form's encoding and, for pages, the form token.
HttpReply route(const HttpRequest& request, Storage& storage);

} // namespace tarnwick
