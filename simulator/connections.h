// A server's TCP connections by their remote ports: the HTTP library hands out no socket, yet a fault must be able to
// break a connection and a stop must not wait for idle ones.
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
    /// Before any other operation: the port that the server listens on.
    void setLocalPort(int port) { m_localPort = port; }

    /// A request has begun on the connection; its answer has left.
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
