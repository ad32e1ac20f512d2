// An HTTP server on 127.0.0.1 whose connections can be broken; the base of this folder's servers.
#pragma once

#include "connections.h"

#include <httplib.h>

#include <future>
#include <mutex>

namespace sim {

/// run() serves on threads of its own; stop() may come from any thread.
class LoopbackServer
{
public:
    LoopbackServer();
    virtual ~LoopbackServer() = default;
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    /// Binds the port (0: a free one) and returns it; from then on clients can connect. Throws std::runtime_error
    /// naming the port if it is taken.
    int bind(int port);

    /// Serves until stop(), and finishes running requests. False if accepting failed.
    bool run();

    /// Waits until run() has begun, then ends it; new connections are refused. Call it from another thread.
    virtual void stop();

protected:
    /// False if it has answered the request, which is then not routed. Thread-safe.
    virtual bool admit(const httplib::Request &request, httplib::Response &response) = 0;

    httplib::Server m_server;
    Connections m_connections;

private:
    std::promise<void> m_started;
    std::once_flag m_stopped;
};

} // namespace sim
