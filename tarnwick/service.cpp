#include "service.h"

#include "error_replies.h"
#include "form_data.h"
#include "router.h"
#include "security_headers.h"

#include <exception>
#include <iostream>

namespace tarnwick {

Service::Service(const std::string& dataFile, const Clock& clock) : m_storage(dataFile, clock) {}

HttpReply Service::handle(const HttpRequest& request)
{
    HttpReply reply = answer(request);
    addSecurityHeaders(reply);
    return reply;
}

void Service::close()
{
    const std::scoped_lock lock(m_mutex);
    m_closed = true;
}

HttpReply Service::answer(const HttpRequest& request)
{
    try {
        const std::scoped_lock lock(m_mutex);
        if (m_closed) {
            return errorReply(request.path, 503, "Shutting down", "Tarnwick is shutting down.");
        }
        return route(request, m_storage);
    } catch (const FormError& error) {
        return errorReply(request.path, 400, "Unreadable form", error.what());
    } catch (const std::exception& error) {
        std::cerr << "tarnwick-service: " << error.what() << '\n';
        return errorReply(request.path, 500, "Something went wrong",
                          "Tarnwick could not finish the request. Try again later.");
    }
}

} // namespace tarnwick
