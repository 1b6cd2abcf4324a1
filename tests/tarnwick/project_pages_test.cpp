#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class ProjectPages : public ::testing::Test
{
protected:
    std::string bodyOf(const std::string& path) const { return m_service.get(path)->body; }

    std::string statusInList(std::size_t index) const
    {
        return jsonOf(m_service.get("/api/pc/instances", m_token))["instances"][index]["status"];
    }

    ServiceUnderTest m_service;
    std::string m_token = m_service.linkDesktop("desktop");
};

TEST_F(ProjectPages, PublicPageShowsTheProject)
{
    const std::string html = bodyOf("/gdps/neon-burst");

    EXPECT_TRUE(contains(html, "<h1><bdi>Neon Burst</bdi></h1>"));
    EXPECT_TRUE(contains(html, "This GDPS is online and ready for players."));
    EXPECT_TRUE(contains(html, "Bright levels, weekly events, and a friendly leaderboard."));
    EXPECT_TRUE(contains(html, "<li><bdi>neon</bdi></li>"));
    EXPECT_TRUE(contains(html, "<li><bdi>events</bdi></li>"));
    EXPECT_TRUE(contains(html, "fill=\"#ff8f1f\""));
    EXPECT_TRUE(contains(bodyOf("/gdps/cube-garden"), "This GDPS is under maintenance."));
}

TEST_F(ProjectPages, EveryTextOfAProjectIsEscapedOnEveryPage)
{
    const std::string evil = "<script>\"'&";
    ASSERT_EQ(statusOf(m_service.post("/api/pc/instances/create",
                                      {{"display_name", evil},
                                       {"description", evil},
                                       {"emoji_badge", "<i>\"'&"},
                                       {"tags", evil + ",<img src=x>"},
                                       {"public_listing", "true"}},
                                      m_token)),
              201);

    for (const char* path : {"/", "/recent", "/gdps/script", "/gdps/script/manage"}) {
        const std::string html = bodyOf(path);
        EXPECT_TRUE(contains(html, "&lt;script&gt;&quot;&#39;&amp;")) << path;
        EXPECT_TRUE(contains(html, "&lt;i&gt;&quot;&#39;&amp;")) << path;
        for (const char* raw : {"<script", "<i>", "<img src=x"}) {
            EXPECT_FALSE(contains(html, raw)) << path;
        }
    }
    EXPECT_TRUE(contains(bodyOf("/gdps/script"), "&lt;img src=x&gt;"));
}

TEST_F(ProjectPages, ManagementPageShowsSettingsAndForms)
{
    const std::string html = bodyOf("/gdps/cube-garden/manage");

    EXPECT_TRUE(contains(html, "<title>Manage Cube Garden · Tarnwick</title>"));
    EXPECT_TRUE(contains(html, "<dd>casual</dd>"));
    EXPECT_TRUE(contains(html, "Shown in the public recent list"));
    EXPECT_TRUE(contains(html, "2 January 2026, 03:04 UTC"));
    EXPECT_TRUE(contains(html, "value=\"online\">Switch on</button>"));
    EXPECT_TRUE(contains(html, "action=\"/gdps/cube-garden/delete\""));
}

TEST_F(ProjectPages, StatusIsSwitchedOffAndOn)
{
    Browser browser = m_service.browser();

    const auto off = browser.post("/gdps/neon-burst/status", {{"status", "maintenance"}});
    EXPECT_EQ(statusOf(off), 303);
    EXPECT_EQ(off->get_header_value("Location"), "/gdps/neon-burst/manage");
    EXPECT_EQ(statusInList(0), "maintenance");
    EXPECT_TRUE(contains(bodyOf("/gdps/neon-burst"), "under maintenance"));

    EXPECT_EQ(statusOf(browser.post("/gdps/neon-burst/status", {{"status", "online"}})), 303);
    EXPECT_EQ(statusInList(0), "online");
}

TEST_F(ProjectPages, UnknownStatusIsRefused)
{
    const auto reply = m_service.browser().post("/gdps/neon-burst/status", {{"status", "exploded"}});

    EXPECT_EQ(statusOf(reply), 422);
    EXPECT_TRUE(contains(reply->body, "The status must be online or maintenance."));
    EXPECT_EQ(statusInList(0), "online");
}

TEST_F(ProjectPages, DeletingNeedsTheBox)
{
    const auto reply = m_service.browser().post("/gdps/neon-burst/delete", {});

    EXPECT_EQ(statusOf(reply), 422);
    EXPECT_TRUE(contains(reply->body, "Check the box first: a deleted GDPS does not come back."));
    EXPECT_EQ(statusOf(m_service.get("/gdps/neon-burst")), 200);
}

TEST_F(ProjectPages, DeletedProjectIsGoneEverywhere)
{
    const auto reply = m_service.browser().post("/gdps/neon-burst/delete", {{"confirm", "yes"}});

    EXPECT_EQ(statusOf(reply), 303);
    EXPECT_EQ(reply->get_header_value("Location"), "/");
    EXPECT_EQ(statusOf(m_service.get("/gdps/neon-burst")), 404);
    EXPECT_EQ(statusOf(m_service.get("/gdps/neon-burst/manage")), 404);
    const auto body = jsonOf(m_service.get("/api/pc/instances", m_token));
    ASSERT_EQ(body["instances"].size(), 1U);
    EXPECT_EQ(body["instances"][0]["slug"], "cube-garden");
}

TEST_F(ProjectPages, UnknownProjectIsNotFound)
{
    Browser browser = m_service.browser();

    for (const char* path : {"/gdps/nothing", "/gdps/nothing/manage", "/gdps/Neon-Burst", "/gdps/%6eeon-burst"}) {
        EXPECT_EQ(statusOf(browser.get(path)), 404) << path;
    }
    EXPECT_EQ(statusOf(browser.post("/gdps/nothing/status", {{"status", "online"}})), 404);
    EXPECT_EQ(statusOf(browser.post("/gdps/nothing/delete", {{"confirm", "yes"}})), 404);
}

TEST_F(ProjectPages, RecentListHasPublicProjectsOnlyNewestFirst)
{
    m_service.post("/api/pc/instances/create", {{"display_name", "Hidden"}}, m_token);
    m_service.post("/api/pc/instances/create", {{"display_name", "Listed"}, {"public_listing", "true"}}, m_token);

    const std::string html = bodyOf("/recent");

    EXPECT_FALSE(contains(html, "Hidden"));
    EXPECT_LT(html.find("Listed"), html.find("Cube Garden"));
    EXPECT_LT(html.find("Cube Garden"), html.find("Neon Burst"));
    EXPECT_EQ(statusOf(m_service.get("/gdps/hidden")), 200) << "not listed, but open to who has the address";
}

} // namespace

} // namespace tarnwick::testing
