#include "error_replies.h"

#include "json_reply.h"
#include "page_reply.h"

namespace tarnwick {

HttpReply errorReply(const std::string& path, int status, const std::string& title, const std::string& message)
{
    return isApiPath(path) ? jsonMessage(status, message) : errorPage(status, title, message);
}

HttpReply protocolErrorReply(const std::string& path, int status)
{
    switch (status) {
    case 413:
        return errorReply(path, status, "Too large", "The request is too large.");
    case 414:
        return errorReply(path, status, "Address too long", "The address of the request is too long.");
    case 416:
        return errorReply(path, status, "Bad range", "The requested range cannot be served.");
    default:
        return errorReply(path, status, "Bad request", "Tarnwick did not understand the request.");
    }
}

} // namespace tarnwick
