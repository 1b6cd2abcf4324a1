#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class FormTokens : public ::testing::Test
{
protected:
    // A post that would switch a project off if it were let through.
    httplib::Result post(const httplib::Headers& headers, const std::string& formToken) const
    {
        httplib::Params fields{{"status", "maintenance"}};
        if (!formToken.empty()) {
            fields.emplace("form_token", formToken);
        }
        return m_service.client().Post("/gdps/neon-burst/status", headers, fields);
    }

    void expectRefused(const httplib::Result& reply) const
    {
        ASSERT_EQ(statusOf(reply), 403);
        EXPECT_TRUE(contains(reply->body, "This form was not sent from a current page of this site."));
        EXPECT_TRUE(contains(m_service.get("/gdps/neon-burst")->body, "online and ready"));
    }

    ServiceUnderTest m_service;
    std::string m_token = std::string(64, 'a');
    httplib::Headers m_cookie{{"Cookie", "other=1; tarnwick_form=" + m_token}};
};

TEST_F(FormTokens, CookieAndFieldThatAgreeAreAccepted)
{
    EXPECT_EQ(statusOf(post(m_cookie, m_token)), 303);
}

TEST_F(FormTokens, MissingFieldIsRefused)
{
    expectRefused(post(m_cookie, ""));
}

TEST_F(FormTokens, OtherFieldIsRefused)
{
    expectRefused(post(m_cookie, std::string(64, 'b')));
    expectRefused(post(m_cookie, std::string(63, 'a')));
}

TEST_F(FormTokens, MissingCookieIsRefused)
{
    expectRefused(post({}, m_token));
}

TEST_F(FormTokens, CookieThatIsNoTokenIsRefusedEvenWhenTheFieldAgrees)
{
    expectRefused(post({{"Cookie", "tarnwick_form=guess"}}, "guess"));
    expectRefused(post({{"Cookie", "tarnwick_form="}}, ""));
}

TEST_F(FormTokens, PostFromAnotherOriginIsRefused)
{
    for (const char* origin : {"http://evil.example", "null", "http://127.0.0.1:1"}) {
        httplib::Headers headers = m_cookie;
        headers.emplace("Origin", origin);
        expectRefused(post(headers, m_token));
    }
}

TEST_F(FormTokens, PostFromTheOwnOriginIsAccepted)
{
    httplib::Headers headers = m_cookie;
    headers.emplace("Origin", m_service.address());

    EXPECT_EQ(statusOf(post(headers, m_token)), 303);
}

TEST_F(FormTokens, EveryFormOfThePagesIsProtected)
{
    m_service.linkDesktop("desktop");
    const std::string code = m_service.startLink("another desktop");
    auto client = m_service.client();
    const httplib::Params fields{{"code", code}, {"decision", "approve"}, {"confirm", "yes"}, {"status", "online"}};

    for (const char* path : {"/link/pc", "/desktops/1/revoke", "/gdps/neon-burst/status", "/gdps/neon-burst/delete"}) {
        EXPECT_EQ(statusOf(client.Post(path, httplib::Headers(), fields)), 403) << path;
    }
    EXPECT_EQ(statusOf(m_service.poll(code, "another desktop")), 202);
}

TEST_F(FormTokens, CookieIsKeptFromScriptsAndOtherSites)
{
    const auto reply = m_service.get("/");

    const std::string cookie = reply->get_header_value("Set-Cookie");
    EXPECT_TRUE(cookie.starts_with("tarnwick_form="));
    EXPECT_TRUE(cookie.ends_with("; Path=/; HttpOnly; SameSite=Strict"));
}

TEST_F(FormTokens, BrowserKeepsItsTokenAndOthersGetAnother)
{
    Browser browser = m_service.browser();
    browser.get("/");
    const std::string first = browser.cookie();
    browser.get("/gdps/neon-burst/manage");
    Browser other = m_service.browser();
    other.get("/");

    EXPECT_EQ(browser.cookie(), first);
    EXPECT_NE(other.cookie(), first);
}

} // namespace

} // namespace tarnwick::testing
