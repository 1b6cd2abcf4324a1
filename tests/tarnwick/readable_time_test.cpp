#include "readable_time.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

TEST(ReadableTime, DurationIsInMinutesAndSeconds)
{
    using std::chrono::milliseconds;
    EXPECT_EQ(readableDuration(std::chrono::minutes(10)), "10 minutes");
    EXPECT_EQ(readableDuration(std::chrono::seconds(599)), "9 minutes 59 seconds");
    EXPECT_EQ(readableDuration(std::chrono::seconds(61)), "1 minute 1 second");
    EXPECT_EQ(readableDuration(std::chrono::seconds(59)), "59 seconds");
    EXPECT_EQ(readableDuration(milliseconds(1)), "1 second");
    EXPECT_EQ(readableDuration(milliseconds(59001)), "1 minute");
}

TEST(ReadableTime, MomentIsADayAndAMinute)
{
    EXPECT_EQ(readableMoment(Moment()), "1 January 1970, 00:00 UTC");
    EXPECT_EQ(readableMoment(Moment(std::chrono::seconds(1709251199))), "29 February 2024, 23:59 UTC");
    EXPECT_EQ(readableMoment(Moment(std::chrono::seconds(-60))), "31 December 1969, 23:59 UTC");
}

} // namespace

} // namespace tarnwick::testing
