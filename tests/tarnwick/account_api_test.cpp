#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class AccountApi : public ::testing::Test
{
protected:
    ServiceUnderTest m_service;
    std::string m_token = m_service.linkDesktop("desktop");
};

TEST_F(AccountApi, SessionTellsUserAndCores)
{
    const auto reply = m_service.get("/api/pc/me", m_token);

    ASSERT_EQ(statusOf(reply), 200);
    const auto body = jsonOf(reply);
    EXPECT_EQ(body["user"]["display_name"], "Robin Vale");
    EXPECT_EQ(body["user"]["plan_name"], "Creator");
    EXPECT_EQ(body["user"]["gdps_limit_label"], "2 of 5");
    const nlohmann::json cores = {{{"key", "gdps-2.2"}, {"label", "GDPS 2.2"}},
                                  {{"key", "gdps-2.1"}, {"label", "GDPS 2.1"}},
                                  {{"key", "gdps-1.9"}, {"label", "GDPS 1.9"}}};
    EXPECT_EQ(body["available_cores"], cores);
}

TEST_F(AccountApi, LimitTextCountsCreatedAndDeletedProjects)
{
    m_service.post("/api/pc/instances/create", {{"display_name", "Third"}}, m_token);
    EXPECT_EQ(jsonOf(m_service.get("/api/pc/me", m_token))["user"]["gdps_limit_label"], "3 of 5");

    m_service.browser().post("/gdps/third/delete", {{"confirm", "yes"}});
    EXPECT_EQ(jsonOf(m_service.get("/api/pc/me", m_token))["user"]["gdps_limit_label"], "2 of 5");
}

TEST_F(AccountApi, InstancesCarryTheTextsTheClientReads)
{
    const auto reply = m_service.get("/api/pc/instances", m_token);

    ASSERT_EQ(statusOf(reply), 200);
    const auto instances = jsonOf(reply)["instances"];
    ASSERT_EQ(instances.size(), 2U);
    const std::string address = m_service.address() + "/gdps/neon-burst";
    EXPECT_EQ(instances[0]["core_label"], "GDPS 2.2");
    EXPECT_EQ(instances[0]["display_name"], "Neon Burst");
    EXPECT_EQ(instances[0]["manage_url"], address + "/manage");
    EXPECT_EQ(instances[0]["public_url"], address);
    EXPECT_EQ(instances[0]["slug"], "neon-burst");
    EXPECT_EQ(instances[0]["status"], "online");
    EXPECT_EQ(instances[1]["slug"], "cube-garden");
    EXPECT_EQ(instances[1]["status"], "maintenance");
}

TEST_F(AccountApi, InstancesComeInTheOrderOfTheirCreation)
{
    for (const char* name : {"Zulu", "Alpha", "Mike"}) {
        ASSERT_EQ(statusOf(m_service.post("/api/pc/instances/create", {{"display_name", name}}, m_token)), 201);
    }

    const auto body = jsonOf(m_service.get("/api/pc/instances", m_token));
    std::vector<std::string> names;
    for (const auto& instance : body["instances"]) {
        names.push_back(instance["display_name"]);
    }

    EXPECT_EQ(names, (std::vector<std::string>{"Neon Burst", "Cube Garden", "Zulu", "Alpha", "Mike"}));
}

TEST_F(AccountApi, PagesOfAnInstanceExist)
{
    const auto body = jsonOf(m_service.get("/api/pc/instances", m_token));

    ASSERT_EQ(body["instances"].size(), 2U);
    for (const auto& instance : body["instances"]) {
        for (const char* key : {"manage_url", "public_url"}) {
            const std::string url = instance[key];
            EXPECT_EQ(statusOf(m_service.get(url.substr(m_service.address().size()))), 200) << url;
        }
    }
}

struct Unauthorised
{
    const char* name;
    const char* header;
    const char* message;
};

// Shown in the name of the test.
void PrintTo(const Unauthorised& unauthorised, std::ostream* stream)
{
    *stream << unauthorised.name;
}

class UnauthorisedRequest : public ::testing::TestWithParam<Unauthorised>
{
protected:
    ServiceUnderTest m_service;
};

TEST_P(UnauthorisedRequest, IsRefusedByEveryRequestWithAToken)
{
    const std::string header = GetParam().header;
    const httplib::Headers headers = header.empty() ? httplib::Headers() : httplib::Headers{{"Authorization", header}};
    auto client = m_service.client();
    std::vector<httplib::Result> replies;
    replies.push_back(client.Get("/api/pc/me", headers));
    replies.push_back(client.Get("/api/pc/instances", headers));
    replies.push_back(client.Post("/api/pc/instances/create", headers, httplib::Params{{"display_name", "A"}}));

    for (const auto& reply : replies) {
        ASSERT_EQ(statusOf(reply), 401);
        EXPECT_EQ(messageOf(reply), GetParam().message);
        EXPECT_EQ(reply->get_header_value("WWW-Authenticate"), "Bearer");
    }
}

constexpr const char* noToken = "The request carries no access token. Link this desktop first.";
constexpr const char* badToken = "The access token is not valid. Link this desktop again.";

INSTANTIATE_TEST_SUITE_P(AccountApi, UnauthorisedRequest,
                         ::testing::Values(Unauthorised{"MissingHeader", "", noToken},
                                           Unauthorised{"EmptyToken", "Bearer ", noToken},
                                           Unauthorised{"OtherScheme", "Basic dXNlcjpwYXNz", noToken},
                                           Unauthorised{"WrongToken", "Bearer 0000", badToken},
                                           Unauthorised{"BytesThatAreNoText", "Bearer \xff\xfe", badToken}),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(AccountApi, RevokedTokenIsRefusedWithItsReason)
{
    ASSERT_EQ(statusOf(m_service.browser().post("/desktops/1/revoke", {})), 303);

    const auto reply = m_service.get("/api/pc/me", m_token);

    EXPECT_EQ(statusOf(reply), 401);
    EXPECT_EQ(messageOf(reply), "The link of this desktop was revoked. Link it again.");
}

TEST_F(AccountApi, SchemeOfTheTokenMayHaveAnyCase)
{
    const httplib::Headers headers{{"Authorization", "bearer " + m_token}};

    EXPECT_EQ(statusOf(m_service.client().Get("/api/pc/me", headers)), 200);
}

} // namespace

} // namespace tarnwick::testing
