// The bare-socket server of the HTTP tests.
#include "rawserver.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

sockaddr *generic(sockaddr_in &address)
{
    return reinterpret_cast<sockaddr *>(&address);
}

std::size_t bodyLength(const std::string &head)
{
    const std::string name = "Content-Length: ";
    const std::size_t start = head.find(name);
    return start == std::string::npos ? 0 : std::stoul(head.substr(start + name.size()));
}

} // namespace

void RawServer::Connection::send(const std::string &bytes) const
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return; // The client has hung up, as some tests want it to.
        sent += static_cast<std::size_t>(count);
    }
}

void RawServer::Connection::trickle(char byte) const
{
    pollfd client{.fd = m_socket, .events = POLLIN, .revents = 0};
    while (::poll(&client, 1, 20) == 0)
        send(std::string(1, byte));
}

RawServer::RawServer(Handler handler)
    : m_handler(std::move(handler)), m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(m_listener, generic(address), sizeof(address)), 0);
    EXPECT_EQ(::listen(m_listener, 8), 0);
    m_thread = std::thread([this] { serve(); });
}

RawServer::~RawServer()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        if (m_socket != -1)
            ::shutdown(m_socket, SHUT_RDWR);
    }
    ::shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    ::close(m_listener);
}

QUrl RawServer::url(const QString &pathAndQuery, const QString &scheme) const
{
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    EXPECT_EQ(::getsockname(m_listener, generic(address), &size), 0);
    return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(scheme, QString::number(ntohs(address.sin_port)), pathAndQuery));
}

std::vector<std::string> RawServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

int RawServer::connections() const
{
    const std::lock_guard lock(m_mutex);
    return m_connections;
}

std::string RawServer::answer(const std::string &status, const std::string &body, const std::string &headers)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers + "\r\n" +
           body;
}

void RawServer::serve()
{
    while (true) {
        const int socket = ::accept(m_listener, nullptr, nullptr);
        {
            const std::lock_guard lock(m_mutex);
            if (socket == -1 || m_stopping) {
                ::close(socket);
                return;
            }
            m_socket = socket;
        }
        serveConnection(socket);
        const std::lock_guard lock(m_mutex);
        m_socket = -1;
        ::close(socket);
    }
}

void RawServer::serveConnection(int socket)
{
    std::string buffer, request;
    bool first = true;
    while (readRequest(socket, buffer, request)) {
        int number = 0;
        {
            const std::lock_guard lock(m_mutex);
            m_connections += first ? 1 : 0;
            m_requests.push_back(request);
            number = static_cast<int>(m_requests.size());
        }
        first = false;
        if (!m_handler(Connection(socket), number))
            return;
    }
}

bool RawServer::readRequest(int socket, std::string &buffer, std::string &request) const
{
    while (true) {
        const std::size_t head = buffer.find("\r\n\r\n");
        const std::size_t length = head == std::string::npos ? 0 : head + 4 + bodyLength(buffer.substr(0, head));
        if (length != 0 && buffer.size() >= length) {
            request = buffer.substr(0, length);
            buffer.erase(0, length);
            return true;
        }
        std::array<char, 65536> bytes{};
        const ssize_t count = ::recv(socket, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            return false;
        buffer.append(bytes.data(), static_cast<std::size_t>(count));
    }
}
