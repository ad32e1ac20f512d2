// A server's TCP connections by remote port. The HTTP library does not expose sockets, but faults must break
// connections and a stop must not wait for idle ones.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <set>

namespace sim {

/// Thread-safe.
class Connections
{
public:
    /// Sets the server's own port. Call this first.
    void setLocalPort(int port) { m_localPort = port; }

    /// Marks the connection as serving a request, and as idle again.
    void begin(int remotePort);
    void end(int remotePort);

    /// Closes the connection at once; the peer sees an orderly end.
    void cut(int remotePort) const;
    void cutAll() const;

    /// Closes it at once; the peer sees "connection reset".
    void reset(int remotePort) const;

    /// Waits until the peer closes the connection, at most for `time`.
    void waitForHangUp(int remotePort, std::chrono::milliseconds time) const;

    /// Ends the connections that carry no request. (The library gives no answer on a socket that cannot be read, so
    /// the others must be left alone.)
    void stopIdle();

private:
    void forEach(const std::function<void(int descriptor, int remotePort)> &action) const;

    int m_localPort{};
    std::mutex m_mutex;
    std::set<int> m_busy;
};

} // namespace sim
