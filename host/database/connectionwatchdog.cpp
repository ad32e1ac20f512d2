// A thread that sleeps until a statement's deadline, then checks whether it has passed.
#include "connectionwatchdog.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

ConnectionWatchdog::ConnectionWatchdog(int socket, std::chrono::milliseconds limit)
    : m_socket(::fcntl(socket, F_DUPFD_CLOEXEC, 0)), m_limit(limit)
{
    if (m_socket < 0)
        throw std::system_error(errno, std::generic_category());
    m_thread = std::jthread([this](const std::stop_token &stop) { run(stop); });
}

ConnectionWatchdog::~ConnectionWatchdog()
{
    m_thread = {};
    ::close(m_socket);
}

void ConnectionWatchdog::start()
{
    const std::scoped_lock lock(m_mutex);
    m_deadline = Clock::now() + m_limit;
    m_started.notify_one();
}

void ConnectionWatchdog::stop()
{
    const std::scoped_lock lock(m_mutex);
    m_deadline.reset();
}

bool ConnectionWatchdog::hasExpired() const
{
    const std::scoped_lock lock(m_mutex);
    return m_expired;
}

void ConnectionWatchdog::run(const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    while (m_started.wait(lock, stop, [this] { return m_deadline.has_value(); }) && !stop.stop_requested()) {
        const Clock::time_point deadline = *m_deadline;
        m_ended.wait_until(lock, stop, deadline, [] { return false; });
        if (!m_deadline || Clock::now() < *m_deadline)
            continue;
        m_expired = true;
        m_deadline.reset();
        ::shutdown(m_socket, SHUT_RDWR);
    }
}
