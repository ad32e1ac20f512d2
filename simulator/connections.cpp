// Finds accepted connections among the process's descriptors.
#include "connections.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <optional>
#include <string>

namespace sim {

namespace {

using AddressQuery = int (*)(int, sockaddr *, socklen_t *);

/// The port at one end of a TCP socket over IPv4.
std::optional<int> portOf(int descriptor, AddressQuery query)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (query(descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0 || address.sin_family != AF_INET)
        return std::nullopt;
    return ntohs(address.sin_port);
}

} // namespace

void Connections::begin(int remotePort)
{
    const std::scoped_lock lock(m_mutex);
    m_busy.insert(remotePort);
}

void Connections::end(int remotePort)
{
    const std::scoped_lock lock(m_mutex);
    m_busy.erase(remotePort);
}

void Connections::cut(int remotePort) const
{
    forEach([=](int descriptor, int port) {
        if (port == remotePort)
            ::shutdown(descriptor, SHUT_RDWR);
    });
}

void Connections::cutAll() const
{
    forEach([](int descriptor, int) { ::shutdown(descriptor, SHUT_RDWR); });
}

void Connections::reset(int remotePort) const
{
    forEach([=](int descriptor, int port) {
        constexpr sockaddr nobody{AF_UNSPEC, {}};
        if (port == remotePort)
            static_cast<void>(::connect(descriptor, &nobody, sizeof nobody)); // dissolves the connection
    });
}

void Connections::waitForHangUp(int remotePort, std::chrono::milliseconds time) const
{
    forEach([=](int descriptor, int port) {
        pollfd poll{descriptor, POLLRDHUP, 0};
        if (port == remotePort)
            ::poll(&poll, 1, static_cast<int>(time.count()));
    });
}

void Connections::stopIdle()
{
    const std::scoped_lock lock(m_mutex);
    forEach([this](int descriptor, int port) {
        if (!m_busy.contains(port))
            ::shutdown(descriptor, SHUT_RD);
    });
}

void Connections::forEach(const std::function<void(int descriptor, int remotePort)> &action) const
{
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const std::string name = entry.path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (portOf(descriptor, ::getsockname) != m_localPort)
            continue;
        if (const auto remotePort = portOf(descriptor, ::getpeername)) // the listening socket has none
            action(descriptor, *remotePort);
    }
}

} // namespace sim
