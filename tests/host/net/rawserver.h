// An HTTP server that can do what a correct one never does: cut, stall, trickle, hang up.
#pragma once

#include <sys/socket.h>

#include <QtCore/QUrl>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

/// Listens on a free port of 127.0.0.1 and serves one connection after the other on a thread of its own.
class RawServer
{
public:
    /// Answers the request with this number (1 and up); false hangs up.
    using Handler = std::function<bool(QTcpSocket &client, int number)>;

    enum class End { Kept, HungUp, Reset };

    /// Gives every request this answer, and the connection this end.
    explicit RawServer(const QByteArray &answer, End end = End::Kept)
        : RawServer([=](QTcpSocket &client, int) {
              const bool connected = send(client, answer);
              return end == End::Reset ? reset(client) : connected && end == End::Kept;
          })
    {}

    explicit RawServer(const Handler &handler) : m_handler(handler)
    {
        std::promise<int> port;
        m_thread = std::jthread([this, &port](const std::stop_token &stop) { serve(port, stop); });
        m_port = port.get_future().get();
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

    static bool send(QTcpSocket &client, const QByteArray &bytes)
    {
        client.write(bytes);
        while (client.bytesToWrite() > 0 && client.waitForBytesWritten()) {
        }
        return client.state() == QAbstractSocket::ConnectedState;
    }

    /// Ends the connection by a reset, where hanging up would end it in order.
    static bool reset(QTcpSocket &client)
    {
        constexpr linger atOnce{1, 0};
        ::setsockopt(static_cast<int>(client.socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        client.abort();
        return false;
    }

    /// A response with this status, a length, and the body.
    static QByteArray answer(const QByteArray &status, const QByteArray &body, const QByteArray &headers = {})
    {
        return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers +
               "\r\n" + body;
    }

private:
    static constexpr int lookMs = 10; ///< How often the end of the server is looked for.

    void serve(std::promise<int> &port, const std::stop_token &stop)
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        port.set_value(server.serverPort());
        while (!stop.stop_requested()) {
            if (!server.hasPendingConnections() && !server.waitForNewConnection(lookMs))
                continue;
            const std::unique_ptr<QTcpSocket> client(server.nextPendingConnection());
            for (bool first = true; nextRequest(*client, stop); first = false) {
                m_connections += first ? 1 : 0;
                if (!m_handler(*client, static_cast<int>(requests().size())))
                    break;
            }
        }
    }

    bool nextRequest(QTcpSocket &client, const std::stop_token &stop)
    {
        QByteArray request;
        while (!isComplete(request)) {
            if (stop.stop_requested() || client.state() != QAbstractSocket::ConnectedState)
                return false;
            client.waitForReadyRead(lookMs);
            request += client.readAll();
        }
        const std::lock_guard lock(m_mutex);
        m_requests.append(request);
        return true;
    }

    static bool isComplete(const QByteArray &request)
    {
        const qsizetype head = request.indexOf("\r\n\r\n");
        const qsizetype length = request.indexOf("Content-Length: ");
        return head != -1 && (length == -1 || request.size() - head - 4 >= request.mid(length + 16, 9).toLongLong());
    }

    Handler m_handler;
    int m_port = 0;
    std::atomic<int> m_connections = 0;
    mutable std::mutex m_mutex;
    QList<QByteArray> m_requests;
    std::jthread m_thread;
};
