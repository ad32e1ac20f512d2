// Blocking sockets and no HTTP library: a request is read to its end and answered with one send.
#include "answerserver.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

constexpr std::string_view headEnd = "\r\n\r\n";

std::size_t contentLength(std::string_view head)
{
    constexpr std::string_view name = "\r\nContent-Length: ";
    const auto place = head.find(name);
    std::size_t length = 0;
    if (place != std::string_view::npos)
        std::from_chars(head.data() + place + name.size(), head.data() + head.size(), length);
    return length;
}

std::string_view methodOf(std::string_view head)
{
    const auto target = head.substr(0, head.find(" HTTP/"));
    const auto path = target.substr(0, target.find('?'));
    return path.substr(path.rfind('/') + 1);
}

// False when the connection has ended.
bool receiveMore(int connection, std::string &input)
{
    std::array<char, 65536> part;
    const ssize_t length = ::recv(connection, part.data(), part.size(), 0);
    if (length > 0)
        input.append(part.data(), static_cast<std::size_t>(length));
    return length > 0;
}

} // namespace

AnswerServer::AnswerServer(const Answers &answers)
{
    for (const auto &[method, body] : answers)
        m_answers[method] =
            "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\n\r\n" + body;
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const plain = reinterpret_cast<sockaddr *>(&address);
    if (::bind(m_listener, plain, size) != 0 || ::listen(m_listener, SOMAXCONN) != 0 ||
        ::getsockname(m_listener, plain, &size) != 0)
        throw std::runtime_error("the answer server cannot listen on 127.0.0.1");
    m_port = ntohs(address.sin_port);
    m_threads.emplace_back(&AnswerServer::accept, this);
}

AnswerServer::~AnswerServer()
{
    ::shutdown(m_listener, SHUT_RDWR);
    m_threads.front().join();
    ::close(m_listener);
    for (const int connection : m_connections)
        ::shutdown(connection, SHUT_RDWR);
    for (std::size_t i = 1; i < m_threads.size(); ++i)
        m_threads[i].join();
    for (const int connection : m_connections)
        ::close(connection);
}

void AnswerServer::accept()
{
    int connection = -1;
    while ((connection = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        const int on = 1;
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        m_connections.push_back(connection);
        m_threads.emplace_back(&AnswerServer::serve, this, connection);
    }
}

void AnswerServer::serve(int connection) const
{
    std::string input;
    for (;;) {
        std::size_t end = 0;
        while ((end = input.find(headEnd)) == std::string::npos) {
            if (!receiveMore(connection, input))
                return;
        }
        const std::string head = input.substr(0, end + headEnd.size());
        while (input.size() < head.size() + contentLength(head)) {
            if (!receiveMore(connection, input))
                return;
        }
        input.clear(); // Clients wait for the answer: nothing of the next request can be here.
        const auto answer = m_answers.find(methodOf(head));
        if (answer == m_answers.end() ||
            ::send(connection, answer->second.data(), answer->second.size(), MSG_NOSIGNAL) < 0)
            return;
    }
}

} // namespace bench
