#pragma once

#include "connection_limits.h"
#include "request_log.h"
#include "service.h"

#include <chrono>
#include <memory>
#include <string>

namespace tarnwick {

// The service on a TCP port of this machine's loopback address.
class HttpServer
{
public:
    HttpServer(Service& service, LogSink log, const ConnectionLimits& limits = {});
    // Waits for the connections that are being served.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    HttpServer(HttpServer&&) = delete;
    HttpServer& operator=(HttpServer&&) = delete;

    // Takes the port (0: any free one); requests wait until serve(). False when the port cannot be had.
    bool bind(int port);

    // Answers, on threads of its own, until stop(). False when listening failed.
    bool serve();

    int port() const;

    // "http://127.0.0.1:PORT"
    std::string address() const;

    // Takes no more connections. True when those being served have ended within the grace period.
    bool stop(std::chrono::milliseconds grace);

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace tarnwick
