// Wakes watchers of the service when something has changed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace sim {

/// Thread-safe.
class Feed
{
public:
    /// Advances the counter and wakes all waiters.
    void touch()
    {
        const std::scoped_lock lock(m_mutex);
        ++m_touches;
        m_changed.notify_all();
    }

    /// Waits until touch() has been called more than `seen` times, at most for `time`. Returns the number of calls so
    /// far.
    std::uint64_t wait(std::uint64_t seen, std::chrono::milliseconds time)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, time, [&] { return m_closed || m_touches > seen; });
        return m_touches;
    }

    /// Ends all present and future waits, so that a stopping server can finish.
    void close()
    {
        const std::scoped_lock lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
    }

    bool isClosed()
    {
        const std::scoped_lock lock(m_mutex);
        return m_closed;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_touches{};
    bool m_closed = false;
};

} // namespace sim
