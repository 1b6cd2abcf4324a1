#pragma once

#include "http_message.h"

namespace tarnwick {

// What every reply tells a browser: run no script, be framed by nobody, guess no type, keep no copy.
void addSecurityHeaders(HttpReply& reply);

} // namespace tarnwick
