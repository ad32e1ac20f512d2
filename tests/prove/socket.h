// A TCP connection on loopback, as the fault proxy needs it: one that can also be broken on purpose.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace prove {

/// Owns a descriptor. A failure of the network is a result, not an exception: here it is what is being tried.
class Socket
{
public:
    Socket() = default;
    explicit Socket(int descriptor) : m_descriptor(descriptor) {}
    Socket(Socket &&other) noexcept;
    Socket &operator=(Socket &&other) noexcept;
    ~Socket();

    /// A connection to a port of this machine; not open when nobody listens there.
    static Socket connectTo(int port);

    /// Takes a port of this machine, 0 a free one, without listening on it. Several sockets may take the same port as
    /// long as none of them listens: so a port can be kept for a process that is killed and started again. Throws
    /// std::runtime_error when it is taken.
    static Socket boundTo(int port);

    bool isOpen() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

    /// Its own port.
    int port() const;

    /// Closes in order: the other side has all that was sent.
    void close();

    /// Has the other side see "connection reset by peer".
    void reset();

    /// False when the other side is gone.
    [[nodiscard]] bool send(std::string_view bytes) const;

    /// Waits for bytes and appends them. False when the other side has closed, or has gone.
    [[nodiscard]] bool receive(std::string &buffer) const;

    /// Waits until the other side has closed, at most `time`; what it sends is lost.
    bool waitForHangUp(std::chrono::milliseconds time) const;

private:
    int m_descriptor = -1;
};

} // namespace prove
