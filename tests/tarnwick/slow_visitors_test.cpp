// Visitors who send a byte now and then, nothing any more, or more and more without end: each is sent away, and the
// others are served.
#include "raw_connection.h"
#include "service_under_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick::testing {

namespace {

class SlowVisitors : public ::testing::Test
{
protected:
    static ConnectionLimits shortLimits()
    {
        ConnectionLimits limits;
        limits.whole = std::chrono::milliseconds(300);
        return limits;
    }

    // Goes on until the service has had enough. False when it never has.
    static bool dripsUntilTheEnd(const RawConnection& connection)
    {
        constexpr int mostDrips = 3000;
        constexpr int pauseMs = 10;
        for (int count = 0; count < mostDrips; ++count) {
            if (!connection.send("x") || connection.endsWithin(pauseMs)) {
                return true;
            }
        }
        return false;
    }

    ServiceUnderTest m_service{":memory:", shortLimits()};
};

TEST_F(SlowVisitors, HeadThatDripsIsCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("GET / HTTP/1.1\r\nHost: localhost\r\nX-Slow: "));

    EXPECT_TRUE(dripsUntilTheEnd(connection));
    EXPECT_EQ(statusOf(m_service.get("/")), 200);
}

TEST_F(SlowVisitors, BodyThatDripsIsCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\nContent-Length: 60000\r\n"
                                "Content-Type: application/x-www-form-urlencoded\r\n\r\ndevice_id="));

    EXPECT_TRUE(dripsUntilTheEnd(connection));
    ASSERT_EQ(m_service.logLines().size(), 1U);
    EXPECT_TRUE(m_service.logLines().front().starts_with("POST /api/pc/link/start 400 "));
}

TEST_F(SlowVisitors, WhoeverWaitsForAThreadGetsOne)
{
    // More than there are threads, each of them in the midst of a request.
    std::vector<std::unique_ptr<RawConnection>> slow;
    for (int count = 0; count < 70; ++count) {
        slow.push_back(std::make_unique<RawConnection>(m_service.port()));
        ASSERT_TRUE(slow.back()->send("GET / HTTP/1.1\r\nX-Slow: "));
    }

    EXPECT_EQ(statusOf(m_service.get("/")), 200);
}

class SilentVisitors : public ::testing::Test
{
protected:
    static constexpr auto mostSilence = std::chrono::milliseconds(1000);

    static ConnectionLimits shortSilence()
    {
        ConnectionLimits limits;
        limits.silence = mostSilence;
        limits.whole = std::chrono::minutes(5);
        return limits;
    }

    // Sends the beginning of a request and no more. True when that comes to an end, and not before its time.
    bool isSentAway(const std::string& beginning) const
    {
        constexpr int patienceMs = 4500; // less than the usual limit of silence
        const auto start = std::chrono::steady_clock::now();
        const RawConnection connection(m_service.port());
        return connection.send(beginning) && connection.endsWithin(patienceMs) &&
               std::chrono::steady_clock::now() - start >= mostSilence;
    }

    ServiceUnderTest m_service{":memory:", shortSilence()};
};

TEST_F(SilentVisitors, AreSentAwayWhereverTheyStop)
{
    EXPECT_TRUE(isSentAway(""));
    EXPECT_TRUE(isSentAway("GET / HTTP/1.1\r\nHost: local"));
    EXPECT_TRUE(isSentAway("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\nContent-Length: 19\r\n"
                           "Content-Type: application/x-www-form-urlencoded\r\n\r\ndevice_id="));
    EXPECT_EQ(statusOf(m_service.get("/")), 200);
}

TEST_F(SilentVisitors, WhoeverSendsAByteInTimeIsServed)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("GET / HTTP/1.1\r\nHost: localhost\r\nX-Slow: "));
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < mostSilence * 3 / 2) {
        constexpr int pauseMs = 20;
        ASSERT_FALSE(connection.endsWithin(pauseMs));
        ASSERT_TRUE(connection.send("x"));
    }
    ASSERT_TRUE(connection.send("\r\n\r\n"));

    EXPECT_TRUE(connection.receiveAll().starts_with("HTTP/1.1 200 "));
}

// What the notes on security promise.
TEST(ConnectionLimits, AreTheStatedOnes)
{
    const tarnwick::ConnectionLimits limits;

    EXPECT_EQ(limits.silence, std::chrono::seconds(5));
    EXPECT_EQ(limits.whole, std::chrono::seconds(15));
    EXPECT_EQ(limits.headBytes, std::size_t{64} * 1024);
    EXPECT_EQ(limits.allBytes, std::size_t{8} * 1024 * 1024);
}

class EndlessVisitors : public ::testing::Test
{
protected:
    // No time runs out while a test waits: only a limit of size can end a connection.
    static ConnectionLimits sizesOnly()
    {
        ConnectionLimits limits;
        limits.silence = std::chrono::minutes(5);
        limits.whole = std::chrono::minutes(5);
        return limits;
    }

    // Reads what there is to read. The service may end the connection before the visitor has its answer.
    static void expectSentAway(const RawConnection& connection)
    {
        const std::string answer = connection.receiveAll();
        EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 4")) << answer.substr(0, 80);
        EXPECT_TRUE(connection.endsWithin(0));
    }

    ServiceUnderTest m_service{":memory:", sizesOnly()};
};

TEST_F(EndlessVisitors, BodyIsCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\n"
                                "Content-Type: application/x-www-form-urlencoded\r\n"
                                "Transfer-Encoding: chunked\r\n\r\n"));
    const std::string chunk = "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    for (int count = 0; count < 40 && connection.send(chunk); ++count) {
    }

    expectSentAway(connection);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me")), 401);
}

TEST_F(EndlessVisitors, HeaderIsCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("GET / HTTP/1.1\r\nHost: localhost\r\nX-Long: "));
    const std::string part(0x10000, 'x');
    for (int count = 0; count < 20 && connection.send(part); ++count) {
    }

    expectSentAway(connection);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me")), 401);
}

TEST_F(EndlessVisitors, HeadersAreCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.send("GET / HTTP/1.1\r\nHost: localhost\r\n"));
    for (int count = 0; count < 20000 && connection.send("X: y\r\n"); ++count) {
    }

    expectSentAway(connection);
    EXPECT_EQ(statusOf(m_service.get("/")), 200);
}

TEST(ManyHeaders, BelowTheLimitAreTaken)
{
    const ServiceUnderTest service;
    const RawConnection connection(service.port());
    std::string request = "GET / HTTP/1.1\r\nHost: localhost\r\n";
    for (int count = 0; count < 10000; ++count) {
        request += "X: y\r\n";
    }

    ASSERT_TRUE(connection.send(request + "\r\n"));

    EXPECT_TRUE(connection.receiveAll().starts_with("HTTP/1.1 200 "));
}

} // namespace

} // namespace tarnwick::testing
