// What one connection may take of the service's time.
#include "bounded_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace tarnwick::testing {

namespace {

// More than the room between the two ends.
constexpr std::size_t replyBytes = 1'000'000;

// The service's end of a connection and its visitor's, with as little room between them as there can be.
class BoundedStreamOfAConnection : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends.data()), 0);
        const int smallest = 1;
        ASSERT_EQ(::setsockopt(m_ends.front(), SOL_SOCKET, SO_SNDBUF, &smallest, sizeof smallest), 0);
        m_limits.whole = std::chrono::milliseconds(300);
    }

    void TearDown() override
    {
        for (const int end : m_ends) {
            ::close(end);
        }
    }

    int service() const { return m_ends.front(); }
    int visitor() const { return m_ends.back(); }

    std::array<int, 2> m_ends{-1, -1};
    ConnectionLimits m_limits;
};

TEST_F(BoundedStreamOfAConnection, WritesNoMoreWhenTheVisitorDoesNotRead)
{
    BoundedStream stream(service(), m_limits);
    const std::string reply(replyBytes, 'x');

    std::size_t written = 0;
    ssize_t count = 0;
    while (written < reply.size() && (count = stream.write(reply.data() + written, reply.size() - written)) >= 0) {
        written += static_cast<std::size_t>(count);
    }

    EXPECT_EQ(count, -1);
    EXPECT_GT(written, 0U);
    EXPECT_LT(written, reply.size());
}

TEST_F(BoundedStreamOfAConnection, WritesOnWhenTheVisitorHasRead)
{
    BoundedStream stream(service(), m_limits);
    const std::string reply(replyBytes, 'x');
    const ssize_t first = stream.write(reply.data(), reply.size());
    ASSERT_GT(first, 0);
    ASSERT_LT(first, static_cast<ssize_t>(reply.size()));

    std::string received(reply.size(), '\0');
    ASSERT_EQ(::recv(visitor(), received.data(), static_cast<std::size_t>(first), MSG_WAITALL), first);

    EXPECT_GT(stream.write(reply.data(), reply.size()), 0);
}

} // namespace

} // namespace tarnwick::testing
