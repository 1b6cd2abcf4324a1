#include "raw_connection.h"
#include "service_under_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace tarnwick::testing {

namespace {

class Concurrency : public ::testing::Test
{
protected:
    // Runs the same request many times at once; returns the statuses, lowest first.
    template <typename Request>
    static std::vector<int> statusesOf(std::size_t count, const Request& request)
    {
        std::promise<void> gate;
        const std::shared_future<void> start = gate.get_future().share();
        std::vector<std::future<int>> running;
        for (std::size_t index = 0; index < count; ++index) {
            running.push_back(std::async(std::launch::async, [start, index, &request] {
                start.wait();
                return request(index);
            }));
        }
        gate.set_value();
        std::vector<int> statuses;
        statuses.reserve(running.size());
        for (std::future<int>& result : running) {
            statuses.push_back(result.get());
        }
        std::sort(statuses.begin(), statuses.end());
        return statuses;
    }

    ServiceUnderTest m_service;
};

TEST_F(Concurrency, OfTwoDecisionsAtOnceExactlyOneCounts)
{
    for (int round = 0; round < 10; ++round) {
        const std::string device = "device " + std::to_string(round);
        const std::string code = m_service.startLink(device);

        const auto statuses = statusesOf(2, [&](std::size_t index) {
            return statusOf(m_service.browser().decide(code, index == 0 ? "approve" : "deny"));
        });

        // The loser opened its page before or after the winner's decision; both ways it is told.
        EXPECT_EQ(statuses, (std::vector<int>{303, 409}));
        const int polled = statusOf(m_service.poll(code, device));
        EXPECT_TRUE(polled == 200 || polled == 410) << polled;
    }
}

TEST_F(Concurrency, OfManyPollsAtOnceExactlyOneGetsTheToken)
{
    const std::string code = m_service.startLink("device");
    ASSERT_EQ(statusOf(m_service.browser().decide(code, "approve")), 303);

    const auto statuses = statusesOf(6, [&](std::size_t) { return statusOf(m_service.poll(code, "device")); });

    EXPECT_EQ(statuses, (std::vector<int>{200, 410, 410, 410, 410, 410}));
}

TEST_F(Concurrency, CreationsAtOnceRespectTheLimit)
{
    const std::string token = m_service.linkDesktop("device");

    const auto statuses = statusesOf(6, [&](std::size_t) {
        return statusOf(m_service.post("/api/pc/instances/create", {{"display_name", "Same"}}, token));
    });

    EXPECT_EQ(statuses, (std::vector<int>{201, 201, 201, 403, 403, 403}));
}

TEST_F(Concurrency, SilentConnectionsDelayNobody)
{
    std::vector<std::unique_ptr<RawConnection>> silent;
    for (int count = 0; count < 20; ++count) {
        silent.push_back(std::make_unique<RawConnection>(m_service.port()));
        ASSERT_TRUE(silent.back()->isOpen());
        silent.back()->send("POST /api/pc/link/start HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100\r\n\r\nd");
    }
    auto client = m_service.client();
    client.set_read_timeout(3);

    EXPECT_EQ(statusOf(client.Get("/")), 200);
}

} // namespace

} // namespace tarnwick::testing
