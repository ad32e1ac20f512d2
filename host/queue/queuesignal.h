// How a push wakes the drains of its process. Drains of other processes find the event at their next look.
#pragma once

#include <QtCore/QtGlobal>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// One per process, for all databases: to be woken for nothing costs a drain one look. Thread-safe.
class QueueSignal
{
public:
    static QueueSignal &instance();

    /// Counts on and wakes all that wait; returns the new count.
    quint64 raise();

    quint64 count() const;

    /// Returns when the count is no longer `seen`, or after `timeout`.
    void wait(quint64 seen, std::chrono::milliseconds timeout);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_raised;
    quint64 m_count = 0;
};
