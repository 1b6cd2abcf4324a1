#include "security_headers.h"

#include <algorithm>

namespace tarnwick {

void addSecurityHeaders(HttpReply& reply)
{
    reply.headers.emplace_back("Content-Security-Policy",
                               "default-src 'none'; style-src 'self'; img-src 'self'; form-action 'self';"
                               " base-uri 'none'; frame-ancestors 'none'");
    reply.headers.emplace_back("X-Frame-Options", "DENY");
    reply.headers.emplace_back("X-Content-Type-Options", "nosniff");
    // "same-origin" and not "no-referrer": with the latter a browser hides the origin of the service's own
    // forms.
    reply.headers.emplace_back("Referrer-Policy", "same-origin");
    const bool hasCacheRule = std::any_of(reply.headers.begin(), reply.headers.end(),
                                          [](const auto& header) { return header.first == "Cache-Control"; });
    if (!hasCacheRule) {
        reply.headers.emplace_back("Cache-Control", "no-store");
    }
}

} // namespace tarnwick
