// Walks over the process's descriptors to find accepted connections.
#include "sockets.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <functional>
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

void shutConnections(int localPort, int how, const std::function<bool(int remotePort)> &wanted)
{
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        const std::string name = entry.path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (portOf(descriptor, ::getsockname) != localPort)
            continue;
        const int remotePort = portOf(descriptor, ::getpeername); // fails for the listening socket
        if (remotePort >= 0 && wanted(remotePort))
            ::shutdown(descriptor, how);
    }
}

} // namespace

void cutConnection(int localPort, int remotePort)
{
    shutConnections(localPort, SHUT_RDWR, [=](int port) { return port == remotePort; });
}

void stopReading(int localPort)
{
    shutConnections(localPort, SHUT_RD, [](int) { return true; });
}

} // namespace sim
