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
    /// The port that the server listens on; call it first.
    void setLocalPort(int port) { m_localPort = port; }

    /// A request has begun on the connection; it has been answered.
    void begin(int remotePort);
    void end(int remotePort);

    /// Closes the connection at once; the peer sees its end.
    void cut(int remotePort) const;
    void cutAll() const;

    /// The same, but the peer sees "connection reset".
    void reset(int remotePort) const;

    /// Waits until the peer has closed the connection, at most `time`.
    void waitForHangUp(int remotePort, std::chrono::milliseconds time) const;

    /// Ends the connections that carry no request. (The library gives no answer on a socket that cannot be read, so
    /// the others must be left alone.)
    void stopIdle();

private:
    void forEach(const std::function<void(int descriptor, int remotePort)> &action) const;

    int m_localPort = 0;
    std::mutex m_mutex;
    std::set<int> m_busy;
};

} // namespace sim
