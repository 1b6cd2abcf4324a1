#include "text.h"

#include "instances.h"
#include "secrets.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

TEST(Text, Utf8OfEveryLengthIsAccepted)
{
    for (const char* text :
         {"", "plain", "é", "Ночь", "漢字", "🔥", "\xf4\x8f\xbf\xbf", "\xed\x9f\xbf", "\xee\x80\x80"}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
}

TEST(Text, BrokenUtf8IsRefused)
{
    for (const char* text :
         {"\x80", "\xc3", "\xc3(", "\xc0\x80", "\xc1\xbf", "\xe0\x80\x80", "\xe0\x9f\xbf", "\xe2\x82", "\xed\xa0\x80",
          "\xf0\x80\x80\x80", "\xf0\x8f\xbf\xbf", "\xf0\x9f\x94", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"}) {
        EXPECT_FALSE(isUtf8(text));
    }
}

TEST(Text, CharactersAreCountedAndNotBytes)
{
    EXPECT_EQ(characterCount(""), 0U);
    EXPECT_EQ(characterCount("abc"), 3U);
    EXPECT_EQ(characterCount("Ночь🔥"), 5U);
}

TEST(Text, ControlCharactersAreFound)
{
    EXPECT_FALSE(hasControlCharacter("Ночь 🔥", LineBreaks::Refused));
    EXPECT_TRUE(hasControlCharacter("a\nb", LineBreaks::Refused));
    EXPECT_FALSE(hasControlCharacter("a\n\tb", LineBreaks::Allowed));
    EXPECT_TRUE(hasControlCharacter("a\x1b", LineBreaks::Allowed));
    EXPECT_TRUE(hasControlCharacter("a\x7f", LineBreaks::Allowed));
}

TEST(Text, IsTrimmedAtBothEnds)
{
    EXPECT_EQ(trimmed(" \t a b \r\n"), "a b");
    EXPECT_EQ(trimmed("   "), "");
}

TEST(Text, LineEndsBecomeLineFeeds)
{
    EXPECT_EQ(withUnixLineEnds("a\r\nb\rc\nd\r\n"), "a\nb\nc\nd\n");
}

TEST(Text, ConstantTimeComparisonComparesEverything)
{
    EXPECT_TRUE(equalInConstantTime("same", "same"));
    EXPECT_TRUE(equalInConstantTime("", ""));
    EXPECT_FALSE(equalInConstantTime("same", "samf"));
    EXPECT_FALSE(equalInConstantTime("same", "sam"));
}

TEST(Text, SlugIsMadeFromAName)
{
    EXPECT_EQ(slugFromName("Neon Burst"), "neon-burst");
    EXPECT_EQ(slugFromName("  --A  &  B!!  "), "a-b");
    EXPECT_EQ(slugFromName("Ночь 2"), "2");
    EXPECT_EQ(slugFromName("🔥"), "gdps");
    EXPECT_EQ(slugFromName(std::string(80, 'x')), std::string(48, 'x'));
    EXPECT_EQ(slugFromName(std::string(47, 'x') + " y"), std::string(47, 'x'));
}

} // namespace

} // namespace tarnwick::testing
