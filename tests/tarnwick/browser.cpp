#include "browser.h"

namespace tarnwick::testing {

httplib::Client boundedClient(int port)
{
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(10);
    client.set_read_timeout(20);
    client.set_write_timeout(20);
    return client;
}

Browser::Browser(int port) : m_client(boundedClient(port)) {}

httplib::Headers Browser::headers() const
{
    return m_cookie.empty() ? httplib::Headers() : httplib::Headers{{"Cookie", m_cookie}};
}

httplib::Result Browser::get(const std::string& path)
{
    httplib::Result result = m_client.Get(path, headers());
    if (result && result->has_header("Set-Cookie")) {
        const std::string cookie = result->get_header_value("Set-Cookie");
        m_cookie = cookie.substr(0, cookie.find(';'));
    }
    return result;
}

httplib::Result Browser::post(const std::string& path, httplib::Params fields)
{
    if (m_cookie.empty()) {
        get("/");
    }
    fields.emplace("form_token", m_cookie.substr(m_cookie.find('=') + 1));
    return m_client.Post(path, headers(), fields);
}

httplib::Result Browser::decide(const std::string& code, const std::string& decision)
{
    get("/link/pc?code=" + code);
    return post("/link/pc", {{"code", code}, {"decision", decision}});
}

} // namespace tarnwick::testing
