#include "router.h"

#include "account_api.h"
#include "error_replies.h"
#include "home_page.h"
#include "link_api.h"
#include "link_pages.h"
#include "loopback_host.h"
#include "project_pages.h"
#include "static_files.h"
#include "text.h"
#include "visit.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

namespace {

struct Route
{
    std::string_view method;
    // "*" stands for one part of the path, which becomes the visit's argument.
    std::string_view path;
    VisitHandler handler;
};

constexpr std::array routes = {
    Route{"POST", "/api/pc/link/start", startLink},
    Route{"GET", "/api/pc/link/poll", pollLink},
    Route{"GET", "/api/pc/me", showSession},
    Route{"GET", "/api/pc/instances", listInstances},
    Route{"POST", "/api/pc/instances/create", createInstance},
    Route{"GET", "/link/pc", showLinkPage},
    Route{"POST", "/link/pc", decideLink},
    Route{"GET", "/", showHome},
    Route{"POST", "/desktops/*/revoke", revokeDesktop},
    Route{"GET", "/recent", showRecentProjects},
    Route{"GET", "/gdps/*", showProject},
    Route{"GET", "/gdps/*/manage", manageProject},
    Route{"POST", "/gdps/*/status", changeProjectStatus},
    Route{"POST", "/gdps/*/delete", deleteProject},
    Route{"GET", "/static/tarnwick-logo.png", serveLogo},
    Route{"GET", "/static/tarnwick.css", serveStyleSheet},
    Route{"GET", "/favicon.ico", serveLogo},
};

// What stands for the route's "*" (empty when it has none); nothing when the path is another one.
std::optional<std::string> matchPath(std::string_view pattern, std::string_view path)
{
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) {
        return pattern == path ? std::optional(std::string()) : std::nullopt;
    }
    const std::string_view before = pattern.substr(0, star);
    const std::string_view after = pattern.substr(star + 1);
    if (path.size() <= before.size() + after.size() || !path.starts_with(before) || !path.ends_with(after)) {
        return std::nullopt;
    }
    const std::string_view part = path.substr(before.size(), path.size() - before.size() - after.size());
    return part.find('/') == std::string_view::npos ? std::optional(std::string(part)) : std::nullopt;
}

// Asking for the head of a page is harmless; polling for a link is not, since it hands over the token.
bool allows(const Route& candidate, const HttpRequest& request)
{
    const bool headOfPage = request.method == "HEAD" && candidate.method == "GET" && !isApiPath(request.path);
    return candidate.method == request.method || headOfPage;
}

// Empty for a path that the service does not have.
std::string allowedMethods(const HttpRequest& request)
{
    std::string methods;
    for (const Route& candidate : routes) {
        if (matchPath(candidate.path, request.path)) {
            methods += methods.empty() ? "" : ", ";
            methods += candidate.method;
            methods += candidate.method == "GET" && !isApiPath(request.path) ? ", HEAD" : "";
        }
    }
    return methods;
}

HttpReply noRouteReply(const HttpRequest& request)
{
    const std::string methods = allowedMethods(request);
    if (methods.empty()) {
        return errorReply(request.path, 404, "Page not found", "There is nothing at this address.");
    }
    const std::string method = isUtf8(request.method) ? request.method : "this method";
    HttpReply reply = errorReply(request.path, 405, "Method not allowed", "This address does not take " + method + ".");
    reply.headers.emplace_back("Allow", methods);
    return reply;
}

bool isUrlEncodedForm(const HttpRequest& request)
{
    const std::string contentType = request.header("Content-Type");
    return equalIgnoringCase(trimmed(std::string_view(contentType).substr(0, contentType.find(';'))),
                             "application/x-www-form-urlencoded");
}

HttpReply run(const Route& found, const HttpRequest& request, Storage& storage, const std::string& argument)
{
    const bool isPost = found.method == "POST";
    if (isPost && !isUrlEncodedForm(request)) {
        return errorReply(request.path, 415, "Unsupported form",
                          "The request must be a form of type application/x-www-form-urlencoded.");
    }
    FormData form = FormData::parse(isPost ? request.body : request.query);
    if (isPost && !isApiPath(request.path) && !isOwnForm(request, form)) {
        return errorReply(request.path, 403, "Form expired",
                          "This form was not sent from a current page of this site. Go back and reload the page.");
    }
    Visit visit{request, storage, std::move(form), argument, formTokenFor(request)};
    return found.handler(visit);
}

} // namespace

HttpReply route(const HttpRequest& request, Storage& storage)
{
    if (request.headerCount("Host") != 1 || !isLoopbackHost(request.header("Host"))) {
        return errorReply(request.path, 421, "Wrong address",
                          "This service answers only under this machine's own address, such as 127.0.0.1.");
    }
    for (const Route& candidate : routes) {
        const auto argument = matchPath(candidate.path, request.path);
        if (argument && allows(candidate, request)) {
            return run(candidate, request, storage, *argument);
        }
    }
    return noRouteReply(request);
}

} // namespace tarnwick
