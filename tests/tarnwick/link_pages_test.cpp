#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

constexpr const char* pagedDevice = "twqt-4e94914f0000";

class LinkPages : public ::testing::Test
{
protected:
    httplib::Result page(const std::string& typed) const
    {
        return m_service.client().Get("/link/pc", {{"code", typed}}, httplib::Headers());
    }

    ServiceUnderTest m_service;
    std::string m_code = m_service.startLink(pagedDevice);
};

TEST_F(LinkPages, PageWithoutACodeAsksForOne)
{
    const auto reply = m_service.get("/link/pc");

    ASSERT_EQ(statusOf(reply), 200);
    EXPECT_TRUE(contains(reply->body, "<form method=\"get\" action=\"/link/pc\">"));
    EXPECT_TRUE(contains(reply->body, "<label for=\"code\">Link code</label>"));
    EXPECT_FALSE(contains(reply->body, "name=\"decision\""));
}

TEST_F(LinkPages, PageWithACodeShowsCodeDeviceAndBothChoices)
{
    const auto reply = page(m_code);

    ASSERT_EQ(statusOf(reply), 200);
    EXPECT_TRUE(contains(reply->body, "value=\"" + m_code + "\" readonly"));
    EXPECT_TRUE(contains(reply->body, std::string("<bdi>") + pagedDevice + "</bdi>"));
    EXPECT_TRUE(contains(reply->body, "value=\"approve\">Approve</button>"));
    EXPECT_TRUE(contains(reply->body, "value=\"deny\">Deny</button>"));
    EXPECT_TRUE(contains(reply->body, "10 minutes"));
}

TEST_F(LinkPages, CodeMayBeTypedInAnyCaseWithOrWithoutDashAndPrefix)
{
    const std::string characters = m_code.substr(5);
    std::string lower = m_code;
    for (char& character : lower) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }

    for (const std::string& typed :
         {lower, "TWPC" + characters, characters, " twpc " + characters + " ", "TWPC--" + characters}) {
        const auto reply = page(typed);
        EXPECT_EQ(statusOf(reply), 200) << typed;
        EXPECT_TRUE(contains(reply->body, "value=\"" + m_code + "\" readonly")) << typed;
    }
}

TEST_F(LinkPages, ApprovalTakesTheTypedCodeToo)
{
    const auto reply = m_service.browser().post("/link/pc", {{"code", m_code.substr(5)}, {"decision", "approve"}});

    EXPECT_EQ(statusOf(reply), 303);
    EXPECT_EQ(statusOf(m_service.poll(m_code, pagedDevice)), 200);
}

TEST_F(LinkPages, ApprovalLeadsToAPageThatSaysSo)
{
    const auto reply = m_service.browser().decide(m_code, "approve");

    ASSERT_EQ(statusOf(reply), 303);
    EXPECT_EQ(reply->get_header_value("Location"), "/link/pc?code=" + m_code);
    EXPECT_TRUE(contains(page(m_code)->body, "Desktop approved"));
    m_service.poll(m_code, pagedDevice);
    EXPECT_TRUE(contains(page(m_code)->body, "Desktop linked"));
}

TEST_F(LinkPages, DenialLeadsToAPageThatSaysSo)
{
    ASSERT_EQ(statusOf(m_service.browser().decide(m_code, "deny")), 303);

    EXPECT_TRUE(contains(page(m_code)->body, "Request denied"));
    EXPECT_EQ(statusOf(m_service.poll(m_code, pagedDevice)), 410);
}

TEST_F(LinkPages, SecondDecisionChangesNothing)
{
    ASSERT_EQ(statusOf(m_service.browser().decide(m_code, "deny")), 303);

    const auto second = m_service.browser().decide(m_code, "approve");

    EXPECT_EQ(statusOf(second), 409);
    EXPECT_TRUE(contains(second->body, "Already decided"));
    EXPECT_EQ(statusOf(m_service.poll(m_code, pagedDevice)), 410);
}

TEST_F(LinkPages, ExpiredCodeCannotBeApproved)
{
    m_service.advance(std::chrono::minutes(10));

    const auto shown = page(m_code);
    EXPECT_EQ(statusOf(shown), 410);
    EXPECT_TRUE(contains(shown->body, "This code has expired"));
    const auto approved = m_service.browser().decide(m_code, "approve");
    EXPECT_EQ(statusOf(approved), 410);
    EXPECT_TRUE(contains(approved->body, "This code has expired"));
    EXPECT_EQ(statusOf(m_service.poll(m_code, pagedDevice)), 410);
}

TEST_F(LinkPages, ReplacedCodeCannotBeApproved)
{
    const std::string newer = m_service.startLink(pagedDevice);

    EXPECT_EQ(statusOf(page(m_code)), 410);
    EXPECT_EQ(statusOf(m_service.browser().decide(m_code, "approve")), 410);
    EXPECT_EQ(statusOf(m_service.poll(newer, pagedDevice)), 202);
}

TEST_F(LinkPages, UnknownCodeComesBackInTheFormEscaped)
{
    const auto reply = page("\"><script>alert('x')</script>");

    EXPECT_EQ(statusOf(reply), 404);
    EXPECT_TRUE(contains(reply->body, "There is no such code."));
    EXPECT_TRUE(contains(reply->body, "value=\"&quot;&gt;&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;\""));
    EXPECT_FALSE(contains(reply->body, "<script"));
}

TEST_F(LinkPages, UnknownCodeCannotBeApproved)
{
    EXPECT_EQ(statusOf(m_service.browser().decide("TWPC-AAAAAA", "approve")), 404);
}

TEST_F(LinkPages, DeviceIsEscaped)
{
    const std::string code = m_service.startLink("<b>\"Mac\" & 'PC'</b>");

    const auto reply = page(code);

    EXPECT_TRUE(contains(reply->body, "<bdi>&lt;b&gt;&quot;Mac&quot; &amp; &#39;PC&#39;&lt;/b&gt;</bdi>"));
}

TEST_F(LinkPages, DecisionMustBeOneOfTheTwo)
{
    for (const char* decision : {"", "maybe", "Approve"}) {
        EXPECT_EQ(statusOf(m_service.browser().decide(m_code, decision)), 422) << decision;
    }
    EXPECT_EQ(statusOf(m_service.poll(m_code, pagedDevice)), 202);
}

} // namespace

} // namespace tarnwick::testing
