// Opening, closing and opening again of one port.
#include "listener.h"

#include <poll.h>
#include <sys/socket.h>

#include <stdexcept>
#include <thread>
#include <utility>

namespace prove {

namespace {

constexpr int millisecondsBetweenLooks = 5;
constexpr int backlog = 64;

Socket listenOn(int port)
{
    Socket socket = Socket::boundTo(port);
    if (::listen(socket.descriptor(), backlog) != 0)
        throw std::runtime_error("port " + std::to_string(port) + " is taken");
    return socket;
}

} // namespace

Listener::Listener(int port) : m_socket(listenOn(port)), m_port(m_socket.port())
{}

void Listener::run(const std::function<void(Socket)> &accepted)
{
    for (;;) {
        stayClosed();
        pollfd poll{m_socket.descriptor(), POLLIN, 0};
        if (::poll(&poll, 1, millisecondsBetweenLooks) <= 0)
            continue;
        Socket connection(::accept4(m_socket.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
        if (connection.isOpen())
            accepted(std::move(connection));
    }
}

void Listener::stayClosed()
{
    std::unique_lock lock(m_mutex);
    const auto time = std::exchange(m_closeFor, {});
    if (time.count() == 0)
        return;
    m_socket.close();
    m_closed.notify_all();
    lock.unlock();
    std::this_thread::sleep_for(time);
    m_socket = listenOn(m_port);
}

void Listener::closeFor(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    m_closeFor = time;
    m_closed.wait(lock, [this] { return m_closeFor.count() == 0; });
}

} // namespace prove
