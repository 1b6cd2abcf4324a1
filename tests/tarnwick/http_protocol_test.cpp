#include "raw_connection.h"
#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class HttpProtocol : public ::testing::Test
{
protected:
    httplib::Result postBody(const std::string& body, const std::string& type) const
    {
        return m_service.client().Post("/api/pc/link/start", body, type);
    }

    std::string rawReply(const std::string& request) const
    {
        const RawConnection connection(m_service.port());
        EXPECT_TRUE(connection.send(request));
        return connection.receiveAll();
    }

    ServiceUnderTest m_service;
    static constexpr const char* m_formType = "application/x-www-form-urlencoded";
};

TEST_F(HttpProtocol, UnknownPathIsNotFoundAsJsonOrAsAPage)
{
    const auto api = m_service.get("/api/pc/nothing");
    EXPECT_EQ(statusOf(api), 404);
    EXPECT_EQ(messageOf(api), "There is nothing at this address.");

    const auto page = m_service.get("/nothing");
    EXPECT_EQ(statusOf(page), 404);
    EXPECT_EQ(page->get_header_value("Content-Type"), "text/html; charset=utf-8");
    EXPECT_TRUE(contains(page->body, "<h1>Page not found</h1>"));
}

TEST_F(HttpProtocol, NearMissesOfAPathAreNotFound)
{
    for (const char* path : {"/api/pc/me/", "/api/pc/ME", "//", "/gdps/", "/gdps//manage", "/gdps/a/b/manage",
                             "/static/", "/static/../main.cpp", "/static/tarnwick-logo.svg", "/line%0Abreak"}) {
        EXPECT_EQ(statusOf(m_service.get(path)), 404) << path;
    }
}

TEST_F(HttpProtocol, WrongMethodSaysWhichIsRight)
{
    auto client = m_service.client();
    const auto put = client.Put("/api/pc/me", "", "text/plain");
    EXPECT_EQ(statusOf(put), 405);
    EXPECT_EQ(put->get_header_value("Allow"), "GET");
    EXPECT_EQ(messageOf(put), "This address does not take PUT.");

    const auto get = client.Get("/api/pc/link/start");
    EXPECT_EQ(statusOf(get), 405);
    EXPECT_EQ(get->get_header_value("Allow"), "POST");

    const auto remove = client.Delete("/link/pc");
    EXPECT_EQ(statusOf(remove), 405);
    EXPECT_EQ(remove->get_header_value("Allow"), "GET, HEAD, POST");
    EXPECT_TRUE(contains(remove->body, "<h1>Method not allowed</h1>"));

    EXPECT_EQ(statusOf(client.Options("/api/pc/me")), 405);
    EXPECT_EQ(statusOf(client.Patch("/", "", "text/plain")), 405);
}

TEST_F(HttpProtocol, HeadOfAPageHasNoBody)
{
    const auto reply = m_service.client().Head("/");

    EXPECT_EQ(statusOf(reply), 200);
    EXPECT_TRUE(reply->body.empty());
}

TEST_F(HttpProtocol, OnlyUrlEncodedFormsAreTaken)
{
    for (const char* type : {"application/json", "text/plain", ""}) {
        const auto reply = postBody("device_id=d", type);
        EXPECT_EQ(statusOf(reply), 415) << type;
        EXPECT_EQ(messageOf(reply), "The request must be a form of type application/x-www-form-urlencoded.");
    }
    const httplib::MultipartFormDataItems parts{{"device_id", "d", "", ""}};
    EXPECT_EQ(statusOf(m_service.client().Post("/api/pc/link/start", parts)), 415);
    EXPECT_EQ(statusOf(postBody("device_id=d", "Application/X-WWW-Form-Urlencoded; charset=UTF-8")), 200);
}

TEST_F(HttpProtocol, FormThatIsNoTextIsRefused)
{
    for (const char* body : {"device_id=%ff", "device_id=\xc3\x28", "device_id=%00", "%ed%a0%80=x"}) {
        const auto reply = postBody(body, m_formType);
        EXPECT_EQ(statusOf(reply), 400) << body;
        EXPECT_EQ(messageOf(reply), "The form is not valid UTF-8 text.") << body;
    }
    EXPECT_EQ(statusOf(m_service.get("/api/pc/link/poll?code=%ff&device_id=d")), 400);
    const auto page = m_service.get("/link/pc?code=%ff");
    EXPECT_EQ(statusOf(page), 400);
    EXPECT_TRUE(contains(page->body, "<h1>Unreadable form</h1>"));
}

TEST_F(HttpProtocol, FieldGivenTwiceIsRefused)
{
    const auto reply = postBody("device_id=a&device_id=b", m_formType);

    EXPECT_EQ(statusOf(reply), 400);
    EXPECT_EQ(messageOf(reply), "The form gives a field twice.");
}

TEST_F(HttpProtocol, BodyMayHave64KiB)
{
    const std::string start = "device_id=d&rest=";
    const std::size_t limit = std::size_t{64} * 1024;

    EXPECT_EQ(statusOf(postBody(start + std::string(limit - start.size(), 'x'), m_formType)), 200);
    const auto reply = postBody(start + std::string(limit - start.size() + 1, 'x'), m_formType);
    EXPECT_EQ(statusOf(reply), 413);
    EXPECT_EQ(messageOf(reply), "The request is too large.");
}

TEST_F(HttpProtocol, MuchTooLargeBodyIsRefusedToo)
{
    const auto reply = postBody(std::string(std::size_t{3} * 1024 * 1024, 'x'), m_formType);

    EXPECT_EQ(statusOf(reply), 413);
}

TEST_F(HttpProtocol, TooLongAddressIsRefused)
{
    EXPECT_EQ(statusOf(m_service.get("/" + std::string(8000, 'a'))), 404);
    EXPECT_EQ(statusOf(m_service.get("/" + std::string(9000, 'a'))), 414);
}

TEST_F(HttpProtocol, PostWithoutABodyIsAnsweredAtOnce)
{
    const std::string reply = rawReply("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\n"
                                       "Content-Type: application/x-www-form-urlencoded\r\n\r\n");

    EXPECT_TRUE(reply.starts_with("HTTP/1.1 422 ")) << reply;
}

TEST_F(HttpProtocol, BytesThatAreNotHttpAreRefused)
{
    EXPECT_TRUE(rawReply("hello\r\n\r\n").starts_with("HTTP/1.1 400 "));
    EXPECT_EQ(statusOf(m_service.get("/")), 200) << "and the next visitor is served";
}

TEST_F(HttpProtocol, OnlyLoopbackNamesAreAnswered)
{
    auto client = m_service.client();
    for (const char* host : {"127.0.0.1", "localhost", "LOCALHOST:80", "[::1]:8080"}) {
        EXPECT_EQ(statusOf(client.Get("/recent", httplib::Headers{{"Host", host}})), 200) << host;
    }
    for (const char* host : {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example", "127.0.0.10",
                             "localhost:80:80", "localhost:", "localhost:x", "127.0.0.1@evil.example", "[::2]"}) {
        const auto reply = client.Get("/api/pc/me", httplib::Headers{{"Host", host}});
        EXPECT_EQ(statusOf(reply), 421) << host;
        EXPECT_EQ(messageOf(reply), "This service answers only under this machine's own address, such as 127.0.0.1.");
    }
}

TEST_F(HttpProtocol, RequestNeedsExactlyOneHost)
{
    EXPECT_TRUE(rawReply("GET / HTTP/1.1\r\n\r\n").starts_with("HTTP/1.1 421 "));
    EXPECT_TRUE(
        rawReply("GET / HTTP/1.1\r\nHost: localhost\r\nHost: evil.example\r\n\r\n").starts_with("HTTP/1.1 421 "));
}

TEST_F(HttpProtocol, RepliesTellBrowsersToBeStrict)
{
    for (const char* path : {"/", "/nothing", "/api/pc/me", "/gdps/neon-burst"}) {
        const auto reply = m_service.get(path);
        const std::string policy = reply->get_header_value("Content-Security-Policy");
        EXPECT_TRUE(contains(policy, "default-src 'none'")) << path;
        EXPECT_TRUE(contains(policy, "frame-ancestors 'none'")) << path;
        EXPECT_FALSE(contains(policy, "script-src")) << path;
        EXPECT_EQ(reply->get_header_value("X-Frame-Options"), "DENY") << path;
        EXPECT_EQ(reply->get_header_value("X-Content-Type-Options"), "nosniff") << path;
        EXPECT_EQ(reply->get_header_value("Cache-Control"), "no-store") << path;
    }
}

TEST_F(HttpProtocol, LogoAndStyleSheetAreInTheProgram)
{
    const auto logo = m_service.get("/static/tarnwick-logo.png");
    EXPECT_EQ(logo->get_header_value("Content-Type"), "image/png");
    EXPECT_TRUE(logo->body.starts_with("\x89PNG\r\n"));
    EXPECT_EQ(m_service.get("/favicon.ico")->body, logo->body);

    const auto style = m_service.get("/static/tarnwick.css");
    EXPECT_EQ(style->get_header_value("Content-Type"), "text/css; charset=utf-8");
    EXPECT_TRUE(contains(style->body, "--accent: #ff8f1f;"));
}

TEST_F(HttpProtocol, LogHasOneLinePerRequestWithoutSecrets)
{
    const std::string token = m_service.linkDesktop("secret-device");
    m_service.get("/api/pc/me", token);
    m_service.get("/nothing\x1b[2J");

    std::string log;
    for (const std::string& line : m_service.logLines()) {
        log += line + "\n";
    }
    EXPECT_TRUE(contains(log, "POST /api/pc/link/start 200 ")) << log;
    EXPECT_TRUE(contains(log, "GET /api/pc/link/poll 200 ")) << log;
    EXPECT_TRUE(contains(log, "GET /api/pc/me 200 ")) << log;
    EXPECT_EQ(m_service.logLines().size(), 6U) << log;
    for (const std::string& secret :
         {token, std::string("TWPC-"), std::string("secret-device"), std::string("?"), std::string("\x1b")}) {
        EXPECT_FALSE(contains(log, secret)) << secret;
    }
}

} // namespace

} // namespace tarnwick::testing
