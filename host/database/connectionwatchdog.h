// Keeps a database server that has stopped answering from blocking its caller for ever.
#pragma once

#include <QtCore/QtGlobal>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

/// Shuts a connection's socket down when a statement has waited too long, so that the driver reports a lost connection.
/// TCP's own time-outs do not help if the server's process hangs: its kernel goes on acknowledging. Used on the
/// connection's thread.
class ConnectionWatchdog
{
public:
    /// The socket stays its owner's. Throws std::system_error when it cannot be watched.
    ConnectionWatchdog(int socket, std::chrono::milliseconds limit);
    ~ConnectionWatchdog();
    Q_DISABLE_COPY_MOVE(ConnectionWatchdog)

    /// The limit counts from start() to stop(), or to the next start().
    void start();
    void stop();

    /// Whether the connection was lost because of the limit.
    bool hasExpired() const;

private:
    using Clock = std::chrono::steady_clock;

    void run(const std::stop_token &stop);

    const int m_socket; // a duplicate: the driver may close its own at any time
    const std::chrono::milliseconds m_limit;
    mutable std::mutex m_mutex;
    std::condition_variable_any m_started;
    std::condition_variable_any m_ended; // notified by nobody: start() need not wake the thread each time
    std::optional<Clock::time_point> m_deadline;
    bool m_expired = false;
    std::jthread m_thread;
};
