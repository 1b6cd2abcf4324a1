#pragma once

#include "form_data.h"
#include "form_tokens.h"
#include "http_message.h"
#include "storage.h"

#include <string>

namespace tarnwick {

// One request on its way to its handler, with what the router has already read and checked.
struct Visit
{
    const HttpRequest& request;
    Storage& storage;
    // The query of a GET, the body of a POST.
    FormData form;
    // What stands for the placeholder in the route's path, for example the slug.
    std::string argument;
    FormToken formToken;

    // The service's address as this visitor wrote it.
    std::string baseUrl() const { return "http://" + request.header("Host"); }
};

using VisitHandler = HttpReply (*)(Visit&);

} // namespace tarnwick
