#pragma once

#include "form_data.h"
#include "http_message.h"

#include <string>

namespace tarnwick {

// The secret that a browser gets as a cookie and that every form of a page repeats in a hidden field. A page
// of another site can make the browser send the cookie at most; it cannot read it, so it cannot repeat it.
struct FormToken
{
    std::string value;
    // The browser has to be told this one.
    bool isNew = false;
};

inline constexpr const char* formTokenField = "form_token";

FormToken formTokenFor(const HttpRequest& request);

std::string formTokenCookie(const FormToken& token);

// True when the form was sent from one of the service's own pages.
bool isOwnForm(const HttpRequest& request, const FormData& form);

} // namespace tarnwick
