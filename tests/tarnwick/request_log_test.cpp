#include "request_log.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

using std::chrono::milliseconds;

TEST(RequestLog, LineHasMethodPathStatusAndDuration)
{
    EXPECT_EQ(requestLogLine("GET", "/api/pc/me", 200, milliseconds(3)), "GET /api/pc/me 200 3 ms");
}

TEST(RequestLog, NothingCanForgeOrBreakALine)
{
    EXPECT_EQ(requestLogLine("GET", "/a\r\nGET /b 200\x1b[31m\xff", 404, milliseconds(0)),
              "GET /a\\x0d\\x0aGET\\x20/b\\x20200\\x1b[31m\\xff 404 0 ms");
    EXPECT_EQ(requestLogLine("", "", 400, milliseconds(0)), "- - 400 0 ms");
}

TEST(RequestLog, LongPathIsCut)
{
    EXPECT_EQ(requestLogLine("GET", std::string(5000, 'a'), 404, milliseconds(0)),
              "GET " + std::string(200, 'a') + " 404 0 ms");
}

} // namespace

} // namespace tarnwick::testing
