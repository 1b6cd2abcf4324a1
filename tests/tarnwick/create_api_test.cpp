#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

class CreateApi : public ::testing::Test
{
protected:
    // The fields the desktop client sends with an untouched form and a name.
    static httplib::Params fields()
    {
        return {{"display_name", "Star Field"},
                {"description", ""},
                {"emoji_badge", "🔥"},
                {"accent_color", "#ff8f1f"},
                {"tags", ""},
                {"preset_name", "balanced"},
                {"core_key", "gdps-2.1"},
                {"public_listing", "true"}};
    }

    static httplib::Params fieldsWith(const std::string& name, const std::string& value)
    {
        httplib::Params changed = fields();
        changed.erase(name);
        changed.emplace(name, value);
        return changed;
    }

    httplib::Result create(const httplib::Params& wanted) const
    {
        return m_service.post("/api/pc/instances/create", wanted, m_token);
    }

    void expectFault(const std::string& name, const std::string& value, const std::string& message) const
    {
        const auto reply = create(fieldsWith(name, value));
        EXPECT_EQ(statusOf(reply), 422) << name << " = " << value;
        EXPECT_EQ(messageOf(reply), message);
        EXPECT_EQ(jsonOf(reply)["errors"], nlohmann::json({{name, message}}));
    }

    ServiceUnderTest m_service;
    std::string m_token = m_service.linkDesktop("desktop");
};

TEST_F(CreateApi, AnswersWithTheNewInstance)
{
    const auto reply = create(fields());

    ASSERT_EQ(statusOf(reply), 201);
    EXPECT_EQ(messageOf(reply), "Star Field is online.");
    const auto instance = jsonOf(reply)["instance"];
    EXPECT_EQ(instance["display_name"], "Star Field");
    EXPECT_EQ(instance["slug"], "star-field");
    EXPECT_EQ(instance["core_label"], "GDPS 2.1");
    EXPECT_EQ(instance["status"], "online");
    EXPECT_EQ(instance["public_url"], m_service.address() + "/gdps/star-field");
    EXPECT_EQ(instance["manage_url"], m_service.address() + "/gdps/star-field/manage");
    EXPECT_EQ(jsonOf(m_service.get("/api/pc/instances", m_token))["instances"].back(), instance);
}

TEST_F(CreateApi, KeepsEveryField)
{
    const auto reply = create({{"display_name", "  Ночь & Day  "},
                               {"description", "first line\r\nsecond “line”"},
                               {"emoji_badge", "👩‍🚀"},
                               {"accent_color", "#0aF"},
                               {"tags", "hardcore, stars ,cube"},
                               {"preset_name", "hardcore"},
                               {"core_key", "gdps-1.9"}});

    ASSERT_EQ(statusOf(reply), 201);
    const auto instance = jsonOf(reply)["instance"];
    EXPECT_EQ(instance["display_name"], "Ночь & Day");
    EXPECT_EQ(instance["description"], "first line\nsecond “line”");
    EXPECT_EQ(instance["emoji_badge"], "👩‍🚀");
    EXPECT_EQ(instance["accent_color"], "#0aF");
    EXPECT_EQ(instance["tags"], "hardcore, stars ,cube");
    EXPECT_EQ(instance["preset_name"], "hardcore");
    EXPECT_EQ(instance["core_key"], "gdps-1.9");
    EXPECT_EQ(instance["public_listing"], false);
}

TEST_F(CreateApi, NameAloneIsEnough)
{
    const auto reply = create({{"display_name", "Bare"}});

    ASSERT_EQ(statusOf(reply), 201);
    const auto instance = jsonOf(reply)["instance"];
    EXPECT_EQ(instance["core_label"], "GDPS 2.2") << "the account's first core";
    EXPECT_EQ(instance["emoji_badge"], "🔥");
    EXPECT_EQ(instance["accent_color"], "#ff8f1f");
    EXPECT_EQ(instance["preset_name"], "balanced");
}

TEST_F(CreateApi, MaintenanceModeStartsOffline)
{
    const auto reply = create(fieldsWith("maintenance_mode", "true"));

    ASSERT_EQ(statusOf(reply), 201);
    EXPECT_EQ(messageOf(reply), "Star Field was created in maintenance mode.");
    EXPECT_EQ(jsonOf(reply)["instance"]["status"], "maintenance");
}

TEST_F(CreateApi, RefusesAMissingName)
{
    expectFault("display_name", "", "Enter a name for the GDPS.");
    expectFault("display_name", "   ", "Enter a name for the GDPS.");
}

TEST_F(CreateApi, CountsTheCharactersOfTheName)
{
    std::string eighty;
    for (int count = 0; count < 80; ++count) {
        eighty += "ж";
    }

    EXPECT_EQ(statusOf(create(fieldsWith("display_name", eighty))), 201);
    expectFault("display_name", eighty + "ж", "The name may have 80 characters at most.");
}

TEST_F(CreateApi, RefusesANameOfTwoLines)
{
    expectFault("display_name", "one\ntwo", "The name must be one line without control characters.");
}

TEST_F(CreateApi, RefusesALongOrUnprintableDescription)
{
    EXPECT_EQ(statusOf(create(fieldsWith("description", std::string(4000, 'x')))), 201);
    expectFault("description", std::string(4001, 'x'), "The description may have 4000 characters at most.");
    expectFault("description", "bell \x07", "The description must not have control characters.");
}

TEST_F(CreateApi, RefusesALongOrUnprintableEmojiBadge)
{
    expectFault("emoji_badge", "🔥🔥🔥🔥🔥🔥🔥", "The emoji badge may have 6 characters at most.");
    expectFault("emoji_badge", "a\nb", "The emoji badge must not have control characters.");
}

TEST_F(CreateApi, RefusesAnAccentThatIsNoColour)
{
    for (const char* accent : {"orange", "ff8f1f", "#ff8f1", "#ff8f1g", "#", "#ff8f1f;", "#ff8f1f00"}) {
        expectFault("accent_color", accent, "The accent must be a colour such as #ff8f1f.");
    }
}

TEST_F(CreateApi, RefusesLongOrUnprintableTags)
{
    EXPECT_EQ(statusOf(create(fieldsWith("tags", std::string(140, 't')))), 201);
    expectFault("tags", std::string(141, 't'), "The tags may have 140 characters at most.");
    expectFault("tags", "a\nb", "The tags must be one line without control characters.");
}

TEST_F(CreateApi, RefusesAnUnknownPreset)
{
    for (const char* preset : {"", "Balanced", "extreme"}) {
        expectFault("preset_name", preset, "The preset must be balanced, casual or hardcore.");
    }
}

TEST_F(CreateApi, RefusesAnUnknownCore)
{
    for (const char* core : {"", "gdps-9.9", "GDPS 2.2"}) {
        expectFault("core_key", core, "The core is not one of your account's cores.");
    }
}

TEST_F(CreateApi, RefusesAnOptionThatIsNotTrue)
{
    expectFault("public_listing", "false", "The option public_listing must be true or left out.");
    expectFault("maintenance_mode", "1", "The option maintenance_mode must be true or left out.");
}

TEST_F(CreateApi, NamesEveryFaultByItsFieldAndTheFirstInTheMessage)
{
    const auto reply = create({{"display_name", ""}, {"accent_color", "red"}, {"preset_name", "none"}});

    EXPECT_EQ(statusOf(reply), 422);
    EXPECT_EQ(messageOf(reply), "Enter a name for the GDPS.");
    EXPECT_EQ(jsonOf(reply)["errors"].size(), 3U);
    EXPECT_TRUE(jsonOf(reply)["errors"].contains("accent_color"));
    EXPECT_TRUE(jsonOf(reply)["errors"].contains("preset_name"));
}

TEST_F(CreateApi, FaultyFormCreatesNothing)
{
    create(fieldsWith("accent_color", "red"));

    EXPECT_EQ(jsonOf(m_service.get("/api/pc/instances", m_token))["instances"].size(), 2U);
}

TEST_F(CreateApi, EndsAtTheLimitOfThePlan)
{
    for (int count = 0; count < 3; ++count) {
        ASSERT_EQ(statusOf(create(fields())), 201);
    }

    const auto reply = create(fields());

    EXPECT_EQ(statusOf(reply), 403);
    EXPECT_EQ(messageOf(reply), "The Creator plan allows 5 GDPS and you have 5.");
    EXPECT_EQ(jsonOf(m_service.get("/api/pc/me", m_token))["user"]["gdps_limit_label"], "5 of 5");
}

TEST_F(CreateApi, SlugsOfEqualNamesDiffer)
{
    EXPECT_EQ(jsonOf(create(fieldsWith("display_name", "Neon Burst")))["instance"]["slug"], "neon-burst-2");
    EXPECT_EQ(jsonOf(create(fieldsWith("display_name", "NEON  burst!")))["instance"]["slug"], "neon-burst-3");
}

TEST_F(CreateApi, NameWithoutLatinLettersGetsASlugToo)
{
    EXPECT_EQ(jsonOf(create(fieldsWith("display_name", "Ночь")))["instance"]["slug"], "gdps");
    EXPECT_EQ(jsonOf(create(fieldsWith("display_name", "../..")))["instance"]["slug"], "gdps-2");
}

} // namespace

} // namespace tarnwick::testing
