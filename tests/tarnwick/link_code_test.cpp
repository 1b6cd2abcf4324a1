#include "link_codes.h"

#include "schema.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace tarnwick::testing {

namespace {

TEST(LinkCode, IsNormalisedFromWhatPeopleType)
{
    for (const char* typed : {"TWPC-AB2CD3", "twpc-ab2cd3", "TWPCAB2CD3", "ab2cd3", " twpc - AB2 CD3 "}) {
        EXPECT_EQ(normaliseLinkCode(typed), "TWPC-AB2CD3") << typed;
    }
}

TEST(LinkCode, MayBeginLikeThePrefix)
{
    EXPECT_EQ(normaliseLinkCode("TWPCAB"), "TWPC-TWPCAB");
    EXPECT_EQ(normaliseLinkCode("TWPC-TWPCAB"), "TWPC-TWPCAB");
}

TEST(LinkCode, OfAnotherFormIsNone)
{
    for (const char* typed : {"", "TWPC-", "TWPC-AB2CD", "TWPC-AB2CD33", "TWPX-AB2CD3", "TWPC-AB2CD0", "TWPC-AB2CDO",
                              "TWPC-AB2CD1", "TWPC-AB2CDI", "TWPC-AB2CDÉ"}) {
        EXPECT_EQ(normaliseLinkCode(typed), "") << typed;
    }
}

class LinkCodeSource : public ::testing::Test
{
protected:
    LinkCodeSource() { prepareSchema(m_database, Moment()); }

    Database m_database{":memory:"};
    LinkCodes m_codes{m_database, [] {
                          return Moment();
                      }};
};

TEST_F(LinkCodeSource, GivesDifferentCodesFromTheWholeAlphabet)
{
    std::set<std::string> codes;
    std::map<char, int> characters;
    for (int count = 0; count < 500; ++count) {
        const std::string code = m_codes.start("device").code;
        EXPECT_EQ(normaliseLinkCode(code), code);
        codes.insert(code);
        for (const char character : code.substr(5)) {
            ++characters[character];
        }
    }

    EXPECT_EQ(codes.size(), 500U);
    // Of 3000 characters each of the 32 is expected 94 times; that one is missing or three times as frequent
    // does not happen to an even source.
    EXPECT_EQ(characters.size(), 32U);
    for (const auto& [character, count] : characters) {
        EXPECT_LT(count, 282) << character;
    }
}

TEST_F(LinkCodeSource, UsesOnlyAnApprovedCodeAndOnlyOnce)
{
    const std::string code = m_codes.start("device").code;

    EXPECT_FALSE(m_codes.use(code));
    EXPECT_TRUE(m_codes.decide(code, LinkDecision::Approve, ownerAccountId));
    EXPECT_FALSE(m_codes.decide(code, LinkDecision::Approve, ownerAccountId));
    EXPECT_TRUE(m_codes.use(code));
    EXPECT_FALSE(m_codes.use(code));
    EXPECT_EQ(m_codes.find(code)->state, LinkCodeState::Used);
}

} // namespace

} // namespace tarnwick::testing
