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

    /// Binds the port (0: a free one) and returns it; connections wait from here on.
    /// Throws std::runtime_error naming the port when it is taken.
    int bind(int port);

    /// Serves until stop(); running requests are finished before it returns. False when accepting failed.
    bool run();

    /// Call it from a thread other than run()'s; waits until run() has begun. Connections are refused from then on.
    virtual void stop();

protected:
    /// False when the request has been answered and must not be routed. Thread-safe.
    virtual bool admit(const httplib::Request &, httplib::Response &) { return true; }

    httplib::Server m_server;
    Connections m_connections;

private:
    std::promise<void> m_started;
    std::once_flag m_stopped;
};

} // namespace sim
