#pragma once

#include "visit.h"

#include <string>

namespace tarnwick {

// A whole page; `content` is the HTML inside <main>.
HttpReply pageReply(const Visit& visit, int status, const std::string& title, const std::string& content);

// A page that says one thing, where there is no visit yet or no way on.
HttpReply errorPage(int status, const std::string& title, const std::string& message);

// After a form: the browser fetches the page anew, so that reloading it sends nothing twice.
HttpReply redirectReply(const std::string& path);

} // namespace tarnwick
