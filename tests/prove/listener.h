// The fault proxy's port: open, or closed for a while.
#pragma once

#include "socket.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace prove {

/// Accepts on 127.0.0.1. run() is called by one thread, closeFor() by any.
class Listener
{
public:
    /// Throws std::runtime_error when the port is taken; 0 takes a free one.
    explicit Listener(int port);

    int port() const { return m_port; }

    /// Hands over connections, for ever.
    [[noreturn]] void run(const std::function<void(Socket)> &accepted);

    /// Has connections refused for `time`, from the moment in which this returns.
    void closeFor(std::chrono::milliseconds time);

private:
    void stayClosed();

    Socket m_socket;
    int m_port;
    std::mutex m_mutex;
    std::condition_variable m_closed;
    std::chrono::milliseconds m_closeFor{0};
};

} // namespace prove
