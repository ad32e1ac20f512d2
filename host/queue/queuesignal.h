// How a push wakes the drains of its process. Drains of other processes find the event at their next look.
#pragma once

#include <QtCore/QtGlobal>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// One per process, for all databases: waking a drain without need costs it one look. Thread-safe.
class QueueSignal
{
public:
    static QueueSignal &instance()
    {
        static QueueSignal signal;
        return signal;
    }

    /// Advances the counter and wakes all waiters; returns the new count.
    quint64 raise()
    {
        const std::scoped_lock lock(m_mutex);
        m_raised.notify_all();
        return ++m_count;
    }

    quint64 count() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_count;
    }

    /// Returns when the count is no longer `seen`, or after `timeout`.
    void wait(quint64 seen, std::chrono::milliseconds timeout)
    {
        std::unique_lock lock(m_mutex);
        m_raised.wait_for(lock, timeout, [this, seen] { return m_count != seen; });
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_raised;
    quint64 m_count = 0;
};
