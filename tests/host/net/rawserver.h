// An HTTP server that can do what a correct one never does: cut, stall, trickle, hang up.
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QUrl>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// Listens on a free port of 127.0.0.1 and serves one connection after the other on a thread of its own.
class RawServer
{
public:
    /// Answers the request with this number (1 and up); false hangs up.
    using Handler = std::function<bool(int client, int number)>;

    enum class End { Kept, HungUp, Reset };

    /// Gives every request this answer, and the connection this end.
    explicit RawServer(const QByteArray &answer, End end = End::Kept)
        : RawServer([=](int client, int) {
              const bool connected = send(client, answer);
              return end == End::Reset ? reset(client) : connected && end == End::Kept;
          })
    {}

    explicit RawServer(const Handler &handler) : m_handler(handler)
    {
        constexpr timeval look{0, 10'000}; // how often its end is looked for, on its connections, too
        ::setsockopt(m_listener, SOL_SOCKET, SO_RCVTIMEO, &look, sizeof look);
        sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        socklen_t size = sizeof address;
        auto *const name = reinterpret_cast<sockaddr *>(&address);
        ::bind(m_listener, name, size);
        ::listen(m_listener, SOMAXCONN);
        ::getsockname(m_listener, name, &size);
        m_port = ntohs(address.sin_port);
        m_thread = std::jthread([this](const std::stop_token &stop) { serve(stop); });
    }

    QUrl url(const QString &pathAndQuery) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(QString::number(m_port), pathAndQuery));
    }

    /// The whole requests that have come.
    QList<QByteArray> requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }
    int connections() const { return m_connections; }

    /// Whether the client has taken everything.
    static bool send(int client, const QByteArray &bytes)
    {
        return ::send(client, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) == bytes.size();
    }

    /// Has the connection end by a reset, where hanging up would end it in order.
    static bool reset(int client)
    {
        constexpr linger atOnce{1, 0};
        ::setsockopt(client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        return false;
    }

    /// A response with this status, a length, and the body.
    static QByteArray answer(const QByteArray &status, const QByteArray &body, const QByteArray &headers = {})
    {
        return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers +
               "\r\n" + body;
    }

private:
    void serve(const std::stop_token &stop)
    {
        while (!stop.stop_requested()) {
            const int client = ::accept(m_listener, nullptr, nullptr);
            m_connections += client == -1 ? 0 : 1;
            while (client != -1 && nextRequest(client, stop) &&
                   m_handler(client, static_cast<int>(requests().size()))) {
            }
            ::close(client);
        }
        ::close(m_listener);
    }

    bool nextRequest(int client, const std::stop_token &stop)
    {
        QByteArray request;
        while (!isComplete(request)) {
            char bytes[65'536];
            const ssize_t size = ::recv(client, bytes, sizeof bytes, 0);
            if (stop.stop_requested() || size == 0 || (size == -1 && errno != EAGAIN))
                return false;
            request.append(bytes, std::max<ssize_t>(size, 0));
        }
        const std::lock_guard lock(m_mutex);
        m_requests.append(request);
        return true;
    }

    /// Bodies are JSON objects.
    static bool isComplete(const QByteArray &request)
    {
        return request.contains("\r\n\r\n") && (request.startsWith("GET ") || request.endsWith('}'));
    }

    Handler m_handler;
    int m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_port = 0;
    std::atomic<int> m_connections = 0;
    mutable std::mutex m_mutex;
    QList<QByteArray> m_requests;
    std::jthread m_thread;
};
