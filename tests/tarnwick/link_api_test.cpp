#include "service_under_test.h"

#include <gtest/gtest.h>

#include <regex>

namespace tarnwick::testing {

namespace {

constexpr const char* linkedDevice = "twqt-4e94914f0000";

class LinkApi : public ::testing::Test
{
protected:
    ServiceUnderTest m_service;
};

TEST_F(LinkApi, StartGivesACodeOfTheAgreedForm)
{
    const auto reply = m_service.post("/api/pc/link/start", {{"device_id", linkedDevice}});

    ASSERT_EQ(statusOf(reply), 200);
    EXPECT_EQ(reply->get_header_value("Content-Type"), "application/json");
    const std::string code = jsonOf(reply).value("code", "");
    EXPECT_TRUE(std::regex_match(code, std::regex("TWPC-[A-HJ-NP-Z2-9]{6}"))) << code;
    EXPECT_EQ(jsonOf(reply).value("approve_url", ""), m_service.address() + "/link/pc?code=" + code);
    EXPECT_EQ(jsonOf(reply).value("expires_in", 0), 600);
    EXPECT_EQ(messageOf(reply), "Approve code " + code + " within 10 minutes.");
}

TEST_F(LinkApi, ApproveUrlUsesTheAddressTheClientUsed)
{
    const httplib::Headers headers{{"Host", "localhost:4444"}};
    const auto reply =
        m_service.client().Post("/api/pc/link/start", headers, httplib::Params{{"device_id", linkedDevice}});

    ASSERT_EQ(statusOf(reply), 200);
    EXPECT_TRUE(jsonOf(reply).value("approve_url", "").starts_with("http://localhost:4444/link/pc?code=TWPC-"));
}

TEST_F(LinkApi, StartNeedsADevice)
{
    const auto missing = m_service.post("/api/pc/link/start", {{"other", "x"}});
    EXPECT_EQ(statusOf(missing), 422);
    EXPECT_EQ(messageOf(missing), "The request must name the device in device_id.");

    const auto blank = m_service.post("/api/pc/link/start", {{"device_id", "   "}});
    EXPECT_EQ(statusOf(blank), 422);
    EXPECT_EQ(messageOf(blank), "The request must name the device in device_id.");
}

TEST_F(LinkApi, StartRefusesADeviceThatCannotBeShown)
{
    const std::string fault = "The device_id must be one line of 200 characters at most.";

    EXPECT_EQ(statusOf(m_service.post("/api/pc/link/start", {{"device_id", std::string(200, 'd')}})), 200);
    const auto tooLong = m_service.post("/api/pc/link/start", {{"device_id", std::string(201, 'd')}});
    EXPECT_EQ(statusOf(tooLong), 422);
    EXPECT_EQ(messageOf(tooLong), fault);

    const auto twoLines = m_service.post("/api/pc/link/start", {{"device_id", "one\ntwo"}});
    EXPECT_EQ(statusOf(twoLines), 422);
    EXPECT_EQ(messageOf(twoLines), fault);
}

TEST_F(LinkApi, PollSaysHowLongAPendingCodeIsGood)
{
    const std::string code = m_service.startLink(linkedDevice);
    m_service.advance(std::chrono::milliseconds(1500));

    const auto reply = m_service.poll(code, linkedDevice);

    EXPECT_EQ(statusOf(reply), 202);
    EXPECT_EQ(messageOf(reply), "Waiting for approval. Code " + code + " is good for another 9 minutes 59 seconds.");
    EXPECT_EQ(jsonOf(reply).value("expires_in", 0), 599);
    EXPECT_FALSE(jsonOf(reply).contains("access_token"));
}

TEST_F(LinkApi, PollTakesTheCodeAsAPersonTypesIt)
{
    const std::string code = m_service.startLink(linkedDevice);

    EXPECT_EQ(statusOf(m_service.poll("twpc" + code.substr(5), linkedDevice)), 202);
}

TEST_F(LinkApi, PendingCodeEndsAtExactlyTenMinutes)
{
    const std::string code = m_service.startLink(linkedDevice);

    m_service.advance(std::chrono::minutes(10) - std::chrono::milliseconds(1));
    const auto last = m_service.poll(code, linkedDevice);
    EXPECT_EQ(statusOf(last), 202);
    EXPECT_EQ(messageOf(last), "Waiting for approval. Code " + code + " is good for another 1 second.");

    m_service.advance(std::chrono::milliseconds(1));
    const auto expired = m_service.poll(code, linkedDevice);
    EXPECT_EQ(statusOf(expired), 410);
    EXPECT_EQ(messageOf(expired), "Link code " + code + " has expired. Generate a new one.");
}

TEST_F(LinkApi, ApprovedCodeEndsAtExactlyTenMinutesToo)
{
    const std::string code = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "approve")), 303);
    m_service.advance(std::chrono::minutes(10));

    const auto reply = m_service.poll(code, linkedDevice);

    EXPECT_EQ(statusOf(reply), 410);
    EXPECT_EQ(messageOf(reply), "Link code " + code + " has expired. Generate a new one.");
}

TEST_F(LinkApi, CodeIsForgottenADayLater)
{
    const std::string code = m_service.startLink(linkedDevice);
    m_service.advance(std::chrono::hours(24) + std::chrono::milliseconds(1));
    m_service.startLink("another device");

    EXPECT_EQ(statusOf(m_service.poll(code, linkedDevice)), 404);
}

TEST_F(LinkApi, ApprovedCodeGivesItsTokenOnce)
{
    const std::string code = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "approve")), 303);

    const auto first = m_service.poll(code, linkedDevice);
    EXPECT_EQ(statusOf(first), 200);
    EXPECT_EQ(messageOf(first), "This desktop is now linked to Robin Vale.");
    const std::string token = jsonOf(first).value("access_token", "");
    EXPECT_TRUE(std::regex_match(token, std::regex("[0-9a-f]{64}"))) << token;
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me", token)), 200);

    const auto second = m_service.poll(code, linkedDevice);
    EXPECT_EQ(statusOf(second), 410);
    EXPECT_EQ(messageOf(second), "Link code " + code + " has already been used.");
    EXPECT_FALSE(jsonOf(second).contains("access_token"));
}

TEST_F(LinkApi, DeniedCodeIsGone)
{
    const std::string code = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "deny")), 303);

    const auto reply = m_service.poll(code, linkedDevice);

    EXPECT_EQ(statusOf(reply), 410);
    EXPECT_EQ(messageOf(reply), "Link code " + code + " was denied on the pairing page.");
}

TEST_F(LinkApi, NewCodeReplacesTheOneBefore)
{
    const std::string pending = m_service.startLink(linkedDevice);
    const std::string approved = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(approved, "approve")), 303);
    const std::string newest = m_service.startLink(linkedDevice);

    for (const std::string& code : {pending, approved}) {
        const auto reply = m_service.poll(code, linkedDevice);
        EXPECT_EQ(statusOf(reply), 410);
        EXPECT_EQ(messageOf(reply), "Link code " + code + " was replaced by a newer one.");
    }
    EXPECT_EQ(statusOf(m_service.poll(newest, linkedDevice)), 202);
}

TEST_F(LinkApi, NewCodeOfAnotherDeviceReplacesNothing)
{
    const std::string code = m_service.startLink(linkedDevice);
    m_service.startLink("another device");

    EXPECT_EQ(statusOf(m_service.poll(code, linkedDevice)), 202);
}

TEST_F(LinkApi, CodeBelongsToTheDeviceThatAskedForIt)
{
    const std::string code = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "approve")), 303);

    const auto stranger = m_service.poll(code, "another device");
    EXPECT_EQ(statusOf(stranger), 404);
    EXPECT_EQ(messageOf(stranger), "This link code is unknown. Generate a new one.");

    EXPECT_EQ(statusOf(m_service.poll(code, linkedDevice)), 200) << "a stranger's poll must not use the code up";
}

TEST_F(LinkApi, PollOfAnUnknownCodeIsNotFound)
{
    for (const char* code : {"TWPC-AAAAAA", "TWPC-", "", "TWPC-AAAAAAA", "TWPC-AAAA0O", "<script>"}) {
        const auto reply = m_service.poll(code, linkedDevice);
        EXPECT_EQ(statusOf(reply), 404) << code;
        EXPECT_EQ(messageOf(reply), "This link code is unknown. Generate a new one.") << code;
    }
}

TEST_F(LinkApi, PollNeedsCodeAndDevice)
{
    const auto noCode = m_service.get("/api/pc/link/poll?device_id=d");
    EXPECT_EQ(statusOf(noCode), 422);
    EXPECT_EQ(messageOf(noCode), "The request must name the link code in code.");

    const auto noDevice = m_service.get("/api/pc/link/poll?code=TWPC-AAAAAA");
    EXPECT_EQ(statusOf(noDevice), 422);
    EXPECT_EQ(messageOf(noDevice), "The request must name the device in device_id.");
}

TEST_F(LinkApi, HeadCannotCollectTheToken)
{
    const std::string code = m_service.startLink(linkedDevice);
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "approve")), 303);

    EXPECT_EQ(statusOf(m_service.client().Head("/api/pc/link/poll?code=" + code + "&device_id=" + linkedDevice)), 405);
    EXPECT_EQ(statusOf(m_service.poll(code, linkedDevice)), 200);
}

TEST_F(LinkApi, LinkingADeviceAgainEndsItsOldToken)
{
    const std::string first = m_service.linkDesktop(linkedDevice);
    const std::string second = m_service.linkDesktop(linkedDevice);

    EXPECT_NE(first, second);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me", first)), 401);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me", second)), 200);
}

} // namespace

} // namespace tarnwick::testing
