#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class HomePage : public ::testing::Test
{
protected:
    std::string page() const { return m_service.get("/")->body; }

    ServiceUnderTest m_service;
};

TEST_F(HomePage, ShowsAccountAndProjects)
{
    const std::string html = page();

    EXPECT_TRUE(contains(html, "<h1>Robin Vale</h1>"));
    EXPECT_TRUE(contains(html, "<dd>Creator</dd>"));
    EXPECT_TRUE(contains(html, "<dd>2 of 5</dd>"));
    EXPECT_TRUE(contains(html, "No desktop is linked."));
    EXPECT_LT(html.find("/gdps/neon-burst/manage"), html.find("/gdps/cube-garden/manage"));
}

TEST_F(HomePage, ShowsEachLinkedDesktopWithItsTimes)
{
    m_service.linkDesktop("first desktop");
    m_service.advance(std::chrono::minutes(90));
    const std::string token = m_service.linkDesktop("second desktop");
    m_service.advance(std::chrono::minutes(5));
    m_service.get("/api/pc/me", token);

    const std::string html = page();

    EXPECT_TRUE(contains(html, "<bdi>first desktop</bdi>"));
    EXPECT_TRUE(contains(html, "Linked 2 January 2026, 03:04 UTC. Last seen 2 January 2026, 03:04 UTC."));
    EXPECT_TRUE(contains(html, "<bdi>second desktop</bdi>"));
    EXPECT_TRUE(contains(html, "Linked 2 January 2026, 04:34 UTC. Last seen 2 January 2026, 04:39 UTC."));
}

TEST_F(HomePage, DeviceIsEscapedWhereverItStands)
{
    m_service.linkDesktop("<script>alert(\"x\")</script>");

    const std::string html = page();

    EXPECT_FALSE(contains(html, "<script"));
    EXPECT_TRUE(contains(html, "<bdi>&lt;script&gt;alert(&quot;x&quot;)&lt;/script&gt;</bdi>"));
    EXPECT_TRUE(contains(html, "aria-label=\"Revoke &lt;script&gt;alert(&quot;x&quot;)&lt;/script&gt;\""));
}

TEST_F(HomePage, RevokeEndsOneDesktopAndNotTheOther)
{
    const std::string first = m_service.linkDesktop("first desktop");
    const std::string second = m_service.linkDesktop("second desktop");

    const auto reply = m_service.browser().post("/desktops/1/revoke", {});

    EXPECT_EQ(statusOf(reply), 303);
    EXPECT_EQ(reply->get_header_value("Location"), "/");
    EXPECT_EQ(statusOf(m_service.get("/api/pc/instances", first)), 401);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/instances", second)), 200);
    EXPECT_FALSE(contains(page(), "first desktop"));
    EXPECT_TRUE(contains(page(), "second desktop"));
}

TEST_F(HomePage, OnlyALinkedDesktopCanBeRevoked)
{
    m_service.linkDesktop("desktop");
    Browser browser = m_service.browser();
    ASSERT_EQ(statusOf(browser.post("/desktops/1/revoke", {})), 303);

    for (const char* id : {"1", "2", "0", "-1", "x", "1x", "99999999999999999999"}) {
        EXPECT_EQ(statusOf(browser.post(std::string("/desktops/") + id + "/revoke", {})), 404) << id;
    }
}

TEST_F(HomePage, SaysThatThereAreNoProjects)
{
    Browser browser = m_service.browser();
    for (const char* slug : {"neon-burst", "cube-garden"}) {
        ASSERT_EQ(statusOf(browser.post(std::string("/gdps/") + slug + "/delete", {{"confirm", "yes"}})), 303);
    }

    EXPECT_TRUE(contains(page(), "There is no GDPS yet."));
    EXPECT_TRUE(contains(page(), "<dd>0 of 5</dd>"));
    EXPECT_TRUE(contains(m_service.get("/recent")->body, "No GDPS is listed at the moment."));
}

} // namespace

} // namespace tarnwick::testing
