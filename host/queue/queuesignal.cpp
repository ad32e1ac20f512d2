// The process-wide wake-up call of the queue.
#include "queuesignal.h"

QueueSignal &QueueSignal::instance()
{
    static QueueSignal signal;
    return signal;
}

quint64 QueueSignal::raise()
{
    const std::scoped_lock lock(m_mutex);
    ++m_count;
    m_raised.notify_all();
    return m_count;
}

quint64 QueueSignal::count() const
{
    const std::scoped_lock lock(m_mutex);
    return m_count;
}

void QueueSignal::wait(quint64 seen, std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    m_raised.wait_for(lock, timeout, [this, seen] { return m_count != seen; });
}
