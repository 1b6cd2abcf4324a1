// Many visitors at once.
#include "service_under_test.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
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

} // namespace

} // namespace tarnwick::testing
