// Connections by system calls: a library would hide just what is to be done to them.
#include "socket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace prove {

namespace {

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

Socket::Socket(Socket &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1))
{}

Socket &Socket::operator=(Socket &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

Socket::~Socket()
{
    close();
}

Socket Socket::connectTo(int port)
{
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = loopback(port);
    if (::connect(socket.m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    const int on = 1;
    ::setsockopt(socket.m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return socket;
}

Socket Socket::boundTo(int port)
{
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(socket.m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (::bind(socket.m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        throw std::runtime_error("port " + std::to_string(port) + " cannot be used");
    return socket;
}

int Socket::port() const
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(m_descriptor, reinterpret_cast<sockaddr *>(&address), &size);
    return ntohs(address.sin_port);
}

void Socket::close()
{
    if (isOpen())
        ::close(std::exchange(m_descriptor, -1));
}

void Socket::reset()
{
    const linger atOnce{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
}

bool Socket::send(std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(sent > 0 ? static_cast<std::size_t>(sent) : 0);
    }
    return true;
}

bool Socket::receive(std::string &buffer) const
{
    std::array<char, 16384> chunk;
    ssize_t received = 0;
    do {
        received = ::recv(m_descriptor, chunk.data(), chunk.size(), 0);
    } while (received < 0 && errno == EINTR);
    if (received <= 0)
        return false;
    buffer.append(chunk.data(), static_cast<std::size_t>(received));
    return true;
}

bool Socket::waitForHangUp(std::chrono::milliseconds time) const
{
    pollfd poll{m_descriptor, POLLRDHUP, 0};
    return ::poll(&poll, 1, static_cast<int>(time.count())) > 0;
}

} // namespace prove
