#pragma once

#include <httplib.h>

#include <string>

namespace tarnwick::testing {

// A client of the service that gives up instead of hanging.
httplib::Client boundedClient(int port);

// A visitor of the pages: keeps the cookie, and repeats a page's hidden form token in its posts.
class Browser
{
public:
    explicit Browser(int port);

    httplib::Result get(const std::string& path);
    // Adds the form token, taken from the start page when no page was read before.
    httplib::Result post(const std::string& path, httplib::Params fields);

    // Approves or denies a link code as a person does: opens its page, presses the button.
    httplib::Result decide(const std::string& code, const std::string& decision);

    const std::string& cookie() const { return m_cookie; }

private:
    httplib::Headers headers() const;

    httplib::Client m_client;
    std::string m_cookie;
};

} // namespace tarnwick::testing
