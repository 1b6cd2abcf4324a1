#include "form_tokens.h"

#include "secrets.h"
#include "text.h"

#include <string_view>

namespace tarnwick {

namespace {

constexpr std::string_view cookieName = "tarnwick_form";
constexpr std::size_t formTokenBytes = 32;

bool isToken(std::string_view text)
{
    return text.size() == formTokenBytes * 2 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Empty when the browser sent no token, or something that is none.
std::string cookieToken(const HttpRequest& request)
{
    const std::string header = request.header("Cookie");
    std::string_view rest = header;
    while (!rest.empty()) {
        const std::size_t end = rest.find(';');
        const std::string cookie = trimmed(rest.substr(0, end));
        const std::size_t equals = cookie.find('=');
        if (equals != std::string::npos && std::string_view(cookie).substr(0, equals) == cookieName &&
            isToken(std::string_view(cookie).substr(equals + 1))) {
            return cookie.substr(equals + 1);
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return {};
}

bool isForeignOrigin(const HttpRequest& request)
{
    const std::string origin = request.header("Origin");
    return !origin.empty() && !equalIgnoringCase(origin, "http://" + request.header("Host"));
}

} // namespace

FormToken formTokenFor(const HttpRequest& request)
{
    const std::string token = cookieToken(request);
    return token.empty() ? FormToken{randomHex(formTokenBytes), true} : FormToken{token, false};
}

std::string formTokenCookie(const FormToken& token)
{
    return std::string(cookieName) + "=" + token.value + "; Path=/; HttpOnly; SameSite=Strict";
}

bool isOwnForm(const HttpRequest& request, const FormData& form)
{
    const std::string token = cookieToken(request);
    return !token.empty() && !isForeignOrigin(request) && equalInConstantTime(token, form.value(formTokenField));
}

} // namespace tarnwick
