// Many visitors at once, and visitors who send slowly or without end.
#include "raw_connection.h"
#include "service_under_test.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

namespace tarnwick::testing {

namespace {

class Pressure : public ::testing::Test
{
protected:
    ServiceUnderTest m_service;
};

TEST_F(Pressure, TwoHundredPollersAreAllAnswered)
{
    constexpr std::size_t pollers = 200;
    std::vector<std::string> codes;
    for (std::size_t index = 0; index < pollers; ++index) {
        codes.push_back(m_service.startLink("device " + std::to_string(index)));
    }
    std::promise<void> gate;
    const std::shared_future<void> start = gate.get_future().share();
    std::vector<std::future<int>> running;
    for (std::size_t index = 0; index < pollers; ++index) {
        running.push_back(std::async(std::launch::async, [this, start, index, &codes] {
            start.wait();
            return statusOf(m_service.poll(codes.at(index), "device " + std::to_string(index)));
        }));
    }
    gate.set_value();
    for (std::future<int>& status : running) {
        EXPECT_EQ(status.get(), 202);
    }
}

TEST_F(Pressure, OfTwoApprovalsAtOnceOneWinsAndOneTokenComes)
{
    for (int round = 0; round < 10; ++round) {
        const std::string device = "device " + std::to_string(round);
        const std::string code = m_service.startLink(device);
        const auto approve = [&] {
            return statusOf(m_service.browser().decide(code, "approve"));
        };

        auto other = std::async(std::launch::async, approve);
        const int mine = approve();

        EXPECT_EQ(mine + other.get(), 303 + 409);
        EXPECT_EQ(statusOf(m_service.poll(code, device)), 200);
        EXPECT_EQ(statusOf(m_service.poll(code, device)), 410);
    }
}

TEST_F(Pressure, BodyThatNeverEndsIsCutOff)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.isOpen());
    connection.send("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\n"
                    "Content-Type: application/x-www-form-urlencoded\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    for (int count = 0; count < 40 && connection.send(chunk); ++count) {
    }
    const std::string answer = connection.receiveAll();
    EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 4")) << answer.substr(0, 80);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me")), 401);
}

TEST_F(Pressure, HeadWithoutEndIsRefused)
{
    const RawConnection connection(m_service.port());
    ASSERT_TRUE(connection.isOpen());
    connection.send("GET / HTTP/1.1\r\nHost: localhost\r\nX-Long: ");
    const std::string part(0x10000, 'x');
    for (int count = 0; count < 20 && connection.send(part); ++count) {
    }
    const std::string answer = connection.receiveAll();
    EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 4")) << answer.substr(0, 80);
    EXPECT_EQ(statusOf(m_service.get("/api/pc/me")), 401);
}

} // namespace

} // namespace tarnwick::testing
