#include "service_under_test.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

// 2 January 2026, 03:04:05 UTC
constexpr std::int64_t startTime = 1767323045000;

httplib::Headers authorization(const std::string& token)
{
    return token.empty() ? httplib::Headers() : httplib::Headers{{"Authorization", "Bearer " + token}};
}

} // namespace

ServiceUnderTest::ServiceUnderTest(const std::string& dataFile, const ConnectionLimits& limits)
    : m_now(startTime),
      m_service(dataFile, [this] { return Moment(std::chrono::milliseconds(m_now.load())); }),
      m_server(
          m_service, [this](const std::string& line) { addLogLine(line); }, limits)
{
    EXPECT_TRUE(m_server.bind(0));
    EXPECT_TRUE(m_server.serve());
}

std::vector<std::string> ServiceUnderTest::logLines() const
{
    const std::scoped_lock lock(m_logMutex);
    return m_logLines;
}

httplib::Result ServiceUnderTest::get(const std::string& path, const std::string& token) const
{
    return client().Get(path, authorization(token));
}

httplib::Result ServiceUnderTest::post(const std::string& path, const httplib::Params& fields,
                                       const std::string& token) const
{
    return client().Post(path, authorization(token), fields);
}

std::string ServiceUnderTest::startLink(const std::string& deviceId) const
{
    const auto reply = post("/api/pc/link/start", {{"device_id", deviceId}});
    EXPECT_EQ(statusOf(reply), 200);
    return jsonOf(reply).value("code", "");
}

httplib::Result ServiceUnderTest::poll(const std::string& code, const std::string& deviceId) const
{
    return client().Get("/api/pc/link/poll", {{"code", code}, {"device_id", deviceId}}, httplib::Headers());
}

std::string ServiceUnderTest::linkDesktop(const std::string& deviceId) const
{
    const std::string code = startLink(deviceId);
    EXPECT_EQ(statusOf(browser().decide(code, "approve")), 303);
    const auto reply = poll(code, deviceId);
    EXPECT_EQ(statusOf(reply), 200);
    return jsonOf(reply).value("access_token", "");
}

void ServiceUnderTest::addLogLine(const std::string& line)
{
    const std::scoped_lock lock(m_logMutex);
    m_logLines.push_back(line);
}

nlohmann::json jsonOf(const httplib::Result& result)
{
    const auto parsed = result ? nlohmann::json::parse(result->body, nullptr, false) : nlohmann::json();
    return parsed.is_object() ? parsed : nlohmann::json::object();
}

std::string messageOf(const httplib::Result& result)
{
    return jsonOf(result).value("message", "");
}

int statusOf(const httplib::Result& result)
{
    return result ? result->status : -1;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace tarnwick::testing
