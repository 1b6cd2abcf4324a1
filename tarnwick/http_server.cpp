#include "http_server.h"

#include "bounded_stream.h"
#include "error_replies.h"
#include "httplib_adapter.h"
#include "security_headers.h"

#include <httplib.h>

#include <future>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr const char* loopbackAddress = "127.0.0.1";
// Each connection being served has a thread of its own. Browsers open some ahead and leave them silent; with
// this many threads they, and clients that send slowly, do not make others wait.
constexpr std::size_t threads = 64;
constexpr int waitingConnections = 128;

using SteadyClock = std::chrono::steady_clock;

// The library limits each pause of a client, but not all of them together, and the size of a header, but not their
// number: one byte now and then would hold a thread for ever.
class BoundedServer : public httplib::Server
{
public:
    explicit BoundedServer(const ConnectionLimits& limits) : m_limits(limits) {}

private:
    // One request per connection: a connection that is kept can close just as the client sends on it, and a
    // form that may not be sent twice would be lost.
    bool process_and_close_socket(socket_t socket) override
    {
        BoundedStream stream(socket, m_limits);
        bool isClosed = false;
        const bool isAnswered = process_request(stream, true, isClosed, nullptr);
        ::shutdown(socket, SHUT_RDWR);
        ::close(socket);
        return isAnswered;
    }

    ConnectionLimits m_limits;
};

} // namespace

class HttpServer::Implementation
{
public:
    Implementation(Service& service, LogSink log, const ConnectionLimits& limits)
        : m_service(service),
          m_log(std::move(log)),
          m_server(limits)
    {
        setLimits();
        setHandlers();
    }

    bool bind(int port);
    bool serve();
    bool stop(std::chrono::milliseconds grace);
    void join();
    int port() const { return m_port; }

private:
    void setLimits();
    void setHandlers();
    void answer(const httplib::Request& request, httplib::Response& response, std::string body);
    void answerWithBody(const httplib::Request& request, httplib::Response& response,
                        const httplib::ContentReader& reader);
    void answerProtocolError(const httplib::Request& request, httplib::Response& response);
    void log(const httplib::Request& request, int status, SteadyClock::time_point start);

    Service& m_service;
    LogSink m_log;
    BoundedServer m_server;
    socket_t m_socket = -1;
    std::thread m_thread;
    std::future<void> m_ended;
    bool m_stopped = false;
    int m_port = 0;
};

void HttpServer::Implementation::setLimits()
{
    m_server.new_task_queue = [] {
        return new httplib::ThreadPool(threads);
    };
    // The library's own choice would let a second service share the port and take half of the requests.
    m_server.set_socket_options([this](socket_t socket) {
        m_socket = socket;
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    m_server.set_payload_max_length(largestReadBody);
    m_server.set_tcp_nodelay(true);
}

void HttpServer::Implementation::setHandlers()
{
    constexpr const char* anyPath = R"([\s\S]*)";
    const auto plain = [this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response, {});
    };
    const auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                                 const httplib::ContentReader& reader) {
        answerWithBody(request, response, reader);
    };
    m_server.Get(anyPath, plain).Options(anyPath, plain);
    m_server.Post(anyPath, withBody).Put(anyPath, withBody).Patch(anyPath, withBody).Delete(anyPath, withBody);
    m_server.set_error_handler([this](const httplib::Request& request, httplib::Response& response) {
        answerProtocolError(request, response);
    });
}

void HttpServer::Implementation::answer(const httplib::Request& request, httplib::Response& response, std::string body)
{
    const auto start = SteadyClock::now();
    const HttpReply reply = m_service.handle(fromWire(request, std::move(body)));
    toWire(reply, response);
    log(request, reply.status, start);
}

void HttpServer::Implementation::answerWithBody(const httplib::Request& request, httplib::Response& response,
                                                const httplib::ContentReader& reader)
{
    const BodyReading reading = readBody(request, reader);
    if (reading.tooLarge) {
        response.status = 413;
    } else if (reading.complete) {
        answer(request, response, reading.body);
    } else if (response.status < 400) {
        response.status = 400;
    }
}

void HttpServer::Implementation::answerProtocolError(const httplib::Request& request, httplib::Response& response)
{
    if (!response.body.empty()) {
        return; // the service's own error
    }
    const auto start = SteadyClock::now();
    HttpReply reply = protocolErrorReply(rawPath(request), response.status);
    addSecurityHeaders(reply);
    toWire(reply, response);
    log(request, reply.status, start);
}

void HttpServer::Implementation::log(const httplib::Request& request, int status, SteadyClock::time_point start)
{
    const auto duration = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - start);
    m_log(requestLogLine(request.method, rawPath(request), status, duration));
}

bool HttpServer::Implementation::bind(int port)
{
    if (port == 0) {
        m_port = m_server.bind_to_any_port(loopbackAddress);
    } else {
        m_port = m_server.bind_to_port(loopbackAddress, port) ? port : -1;
    }
    // The library lets five connections wait, fewer than a browser opens at once; those beyond lose whole
    // seconds.
    return m_port > 0 && ::listen(m_socket, waitingConnections) == 0;
}

bool HttpServer::Implementation::serve()
{
    std::packaged_task<void()> task([this] { m_server.listen_after_bind(); });
    m_ended = task.get_future();
    m_thread = std::thread(std::move(task));
    // stop() has no effect on a server that does not run yet.
    while (!m_server.is_running() && m_ended.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
    return m_server.is_running();
}

bool HttpServer::Implementation::stop(std::chrono::milliseconds grace)
{
    if (!m_thread.joinable()) {
        return true;
    }
    // The library does not stand being stopped twice.
    if (!m_stopped) {
        m_stopped = true;
        m_server.stop();
    }
    return m_ended.wait_for(grace) == std::future_status::ready;
}

void HttpServer::Implementation::join()
{
    stop(std::chrono::milliseconds(0));
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

HttpServer::HttpServer(Service& service, LogSink log, const ConnectionLimits& limits)
    : m_implementation(std::make_unique<Implementation>(service, std::move(log), limits))
{
}

HttpServer::~HttpServer()
{
    m_implementation->join();
}

bool HttpServer::bind(int port)
{
    return m_implementation->bind(port);
}

bool HttpServer::serve()
{
    return m_implementation->serve();
}

int HttpServer::port() const
{
    return m_implementation->port();
}

std::string HttpServer::address() const
{
    return std::string("http://") + loopbackAddress + ":" + std::to_string(port());
}

bool HttpServer::stop(std::chrono::milliseconds grace)
{
    return m_implementation->stop(grace);
}

} // namespace tarnwick
