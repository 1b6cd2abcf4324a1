#include "page_reply.h"

#include "page_template.h"

namespace tarnwick {

namespace {

HttpReply wholePage(int status, const std::string& title, const std::string& content)
{
    return {status, "text/html; charset=utf-8", renderTemplate("layout", {{"title", title}, {"content", content}}), {}};
}

} // namespace

HttpReply pageReply(const Visit& visit, int status, const std::string& title, const std::string& content)
{
    HttpReply reply = wholePage(status, title, content);
    if (visit.formToken.isNew) {
        reply.headers.emplace_back("Set-Cookie", formTokenCookie(visit.formToken));
    }
    return reply;
}

HttpReply errorPage(int status, const std::string& title, const std::string& message)
{
    return wholePage(status, title, renderTemplate("error", {{"title", title}, {"message", message}}));
}

HttpReply redirectReply(const std::string& path)
{
    return {303, "text/plain; charset=utf-8", "", {{"Location", path}}};
}

} // namespace tarnwick
