// Configures the HTTP library for clients that keep their connections.
#include "loopbackserver.h"

#include <sys/socket.h>

#include <stdexcept>
#include <string>

namespace sim {

namespace {

constexpr std::size_t threads = 80; // each open connection keeps one; 16 of them may be event streams
constexpr std::size_t requestsPerConnection = 1'000'000;
constexpr time_t keepAliveSeconds = 15;
constexpr std::size_t largestBody = 1 << 20;

/// Whether all requests of this thread's connection have been read to their ends. The library leaves the body of a
/// request that it or admit() refuses unread, and would take it for the next request, without the headers that the
/// first was refused for.
thread_local bool isInStep = true;

/// Runs the library's tasks, each of which serves a connection.
class Pool : public httplib::ThreadPool
{
public:
    using ThreadPool::ThreadPool;

    void enqueue(std::function<void()> task) override
    {
        ThreadPool::enqueue([task = std::move(task)] {
            isInStep = true;
            task();
        });
    }
};

bool isRead(const httplib::Request &request)
{
    const bool hasHeaders = request.remote_port >= 0; // set once they are read
    return hasHeaders && !request.has_header("Transfer-Encoding") &&
           request.body.size() == request.get_header_value<std::uint64_t>("Content-Length");
}

/// The status to refuse a request with; 0 for none. The library limits only the size of plain bodies whose length is
/// announced.
int refusedWith(const httplib::Request &request)
{
    if (!isInStep)
        return 400;
    if (request.has_header("Content-Encoding"))
        return 415;
    const bool hasBody = request.method.starts_with('P'); // POST, PUT, PATCH
    return request.has_header("Transfer-Encoding") || (hasBody && !request.has_header("Content-Length")) ? 411 : 0;
}

/// Without the library's default, which would let two servers share a port unnoticed.
void setSocketOptions(socket_t socket)
{
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

} // namespace

LoopbackServer::LoopbackServer()
{
    m_server.new_task_queue = [this] {
        m_started.set_value(); // the library makes its threads once it can be stopped
        return new Pool(threads);
    };
    m_server.set_tcp_nodelay(true);
    m_server.set_socket_options(setSocketOptions);
    m_server.set_keep_alive_max_count(requestsPerConnection);
    m_server.set_keep_alive_timeout(keepAliveSeconds);
    m_server.set_payload_max_length(largestBody);
    m_server.set_pre_routing_handler([this](const auto &request, auto &response) {
        m_connections.begin(request.remote_port);
        if (const int status = refusedWith(request))
            response.status = status;
        else if (admit(request, response))
            return httplib::Server::HandlerResponse::Unhandled;
        return httplib::Server::HandlerResponse::Handled;
    });
    m_server.set_post_routing_handler([](const auto &request, auto &response) {
        isInStep = isInStep && isRead(request);
        if (!isInStep)
            response.set_header("Connection", "close");
    });
    m_server.set_logger([this](const auto &request, const auto &) {
        m_connections.end(request.remote_port);
        if (!isInStep)
            m_connections.cut(request.remote_port);
    });
}

int LoopbackServer::bind(int port)
{
    const std::string loopback = "127.0.0.1";
    const int bound = port == 0                               ? m_server.bind_to_any_port(loopback)
                      : m_server.bind_to_port(loopback, port) ? port
                                                              : -1;
    if (bound <= 0)
        throw std::runtime_error("port " + std::to_string(port) + " on " + loopback + " cannot be used; is it taken?");
    m_connections.setLocalPort(bound);
    return bound;
}

bool LoopbackServer::run()
{
    return m_server.listen_after_bind();
}

void LoopbackServer::stop()
{
    std::call_once(m_stopped, [this] {
        m_started.get_future().wait();
        m_server.stop();
        m_connections.stopIdle();
    });
}

} // namespace sim
