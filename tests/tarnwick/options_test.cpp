#include "options.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarnwick::testing {

namespace {

Options parsed(const std::vector<std::string>& arguments)
{
    return parseOptions(arguments);
}

std::string optionsFaultOf(const std::vector<std::string>& arguments)
{
    try {
        parseOptions(arguments);
    } catch (const OptionError& error) {
        return error.what();
    }
    return "none";
}

TEST(Options, DefaultToAFreePortAndMemory)
{
    const Options options = parsed({});

    EXPECT_EQ(options.port, 0);
    EXPECT_EQ(options.dataFile, ":memory:");
    EXPECT_FALSE(options.help);
}

TEST(Options, AreTakenWithASpaceOrAnEqualsSign)
{
    const Options spaced = parsed({"--port", "8080", "--data", "a.db"});
    EXPECT_EQ(spaced.port, 8080);
    EXPECT_EQ(spaced.dataFile, "a.db");

    const Options joined = parsed({"--data=a=b.db", "--port=65535"});
    EXPECT_EQ(joined.port, 65535);
    EXPECT_EQ(joined.dataFile, "a=b.db");
}

TEST(Options, RefuseAPortThatIsNone)
{
    for (const char* port : {"", "-1", "65536", "80x", "x", "99999999999", "+80", " 80"}) {
        EXPECT_EQ(optionsFaultOf({"--port", port}), "--port takes a number from 0 to 65535") << port;
    }
}

TEST(Options, RefuseWhatTheyDoNotKnow)
{
    EXPECT_EQ(optionsFaultOf({"--wat"}), "unknown option --wat");
    EXPECT_EQ(optionsFaultOf({"8080"}), "unknown option 8080");
    EXPECT_EQ(optionsFaultOf({"--port"}), "--port needs a value");
    EXPECT_EQ(optionsFaultOf({"--data"}), "--data needs a value");
    EXPECT_EQ(optionsFaultOf({"--data="}), "--data takes the name of a file");
}

TEST(Options, HelpNamesEveryOptionAndTheMissingPassword)
{
    EXPECT_TRUE(parsed({"--help"}).help);
    for (const char* part : {"--port PORT", "--data FILE", "--help", "127.0.0.1", "no password"}) {
        EXPECT_NE(helpText().find(part), std::string::npos) << part;
    }
}

} // namespace

} // namespace tarnwick::testing
