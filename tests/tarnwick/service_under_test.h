#pragma once

#include "browser.h"
#include "http_server.h"
#include "service.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace tarnwick::testing {

// The service in this process, on a port of its own, with a clock that only the test moves.
class ServiceUnderTest
{
public:
    explicit ServiceUnderTest(const std::string& dataFile = ":memory:", const ConnectionLimits& limits = {});

    int port() const { return m_server.port(); }
    std::string address() const { return m_server.address(); }
    std::vector<std::string> logLines() const;

    void advance(std::chrono::milliseconds duration) { m_now += duration.count(); }

    httplib::Client client() const { return boundedClient(port()); }
    Browser browser() const { return Browser(port()); }

    httplib::Result get(const std::string& path, const std::string& token = "") const;
    httplib::Result post(const std::string& path, const httplib::Params& fields, const std::string& token = "") const;

    // The steps of linking; each fails the test when the service does not answer as agreed.
    std::string startLink(const std::string& deviceId) const;
    httplib::Result poll(const std::string& code, const std::string& deviceId) const;
    std::string linkDesktop(const std::string& deviceId) const;

private:
    void addLogLine(const std::string& line);

    std::atomic<std::int64_t> m_now;
    Service m_service;
    mutable std::mutex m_logMutex;
    std::vector<std::string> m_logLines;
    HttpServer m_server;
};

nlohmann::json jsonOf(const httplib::Result& result);

// Empty when the reply has none.
std::string messageOf(const httplib::Result& result);

// -1 when there is no reply at all.
int statusOf(const httplib::Result& result);

bool contains(const std::string& text, const std::string& part);

} // namespace tarnwick::testing
