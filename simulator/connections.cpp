// Walks over the process's descriptors to find accepted connections.
#include "connections.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <string>

namespace sim {

namespace {

using AddressQuery = int (*)(int, sockaddr *, socklen_t *);

/// The port at one end of a TCP socket over IPv4; -1 for any other descriptor.
int portOf(int descriptor, AddressQuery query)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (query(descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0 || address.sin_family != AF_INET)
        return -1;
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
    shut(SHUT_RDWR, [=](int port) { return port == remotePort; });
}

void Connections::stopIdle()
{
    const std::scoped_lock lock(m_mutex);
    shut(SHUT_RD, [this](int port) { return !m_busy.contains(port); });
}

void Connections::shut(int how, const std::function<bool(int remotePort)> &wanted) const
{
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const std::string name = entry.path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (portOf(descriptor, ::getsockname) != m_localPort)
            continue;
        const int remotePort = portOf(descriptor, ::getpeername); // fails for the listening socket
        if (remotePort >= 0 && wanted(remotePort))
            ::shutdown(descriptor, how);
    }
}

} // namespace sim
