// An HTTP server on bare sockets that can do what a correct one never does: cut, stall, trickle, hang up.
#pragma once

#include <QtCore/QString>
#include <QtCore/QUrl>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Listens on a free port of 127.0.0.1 and serves one connection after the other on a thread of its own.
class RawServer
{
public:
    class Connection
    {
    public:
        explicit Connection(int socket) : m_socket(socket) {}
        void send(const std::string &bytes) const;

        /// Sends `byte` again and again until the client hangs up.
        void trickle(char byte) const;

    private:
        int m_socket;
    };

    /// Answers the request with this number (1 and up); false hangs up.
    using Handler = std::function<bool(const Connection &connection, int number)>;

    explicit RawServer(Handler handler);
    ~RawServer();
    Q_DISABLE_COPY_MOVE(RawServer)

    QUrl url(const QString &pathAndQuery, const QString &scheme = QStringLiteral("http")) const;

    /// The whole requests that have come, and the connections they came on.
    std::vector<std::string> requests() const;
    int connections() const;

    /// A response with this status line, a length, and the body.
    static std::string answer(const std::string &status, const std::string &body, const std::string &headers = {});

private:
    void serve();
    void serveConnection(int socket);
    bool readRequest(int socket, std::string &buffer, std::string &request) const;

    Handler m_handler;
    int m_listener;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_requests;
    int m_connections = 0;
    int m_socket = -1;
    bool m_stopping = false;
    std::thread m_thread;
};
