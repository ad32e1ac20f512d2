// The persistent queue of requests that must not be lost: the side that empties it.
#pragma once

#include "queuehandler.h"

#include <poshost_export.h>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

class QueueDelivery;
struct QueueSettings;

/// Hands the stored events to the handlers of their owners, on a thread and a database connection of its own. An event
/// is deleted only after its handler has returned. If the handler throws QueueRefusal, the event becomes a dead letter
/// and later events of its order wait behind it; after any other exception it is tried again, without a limit, after an
/// exponential back-off with full jitter. Delivery is at least once: handlers must be idempotent.
class POSHOST_EXPORT QueueDrain
{
public:
    /// Works on the configured database, see DBQueueBroker. Does nothing until start(). A push in this process wakes
    /// it; what another process has pushed, and the end of a back-off, it finds when it looks by itself.
    explicit QueueDrain(std::chrono::milliseconds timeBetweenLooks = std::chrono::seconds(1));

    /// Stops the drain.
    ~QueueDrain();
    Q_DISABLE_COPY_MOVE(QueueDrain)

    /// Who sends the events of `owner`. To be set before start(); events of owners without a handler stay in the queue.
    void setHandler(const QString &owner, const QueueHandler &handler);

    /// Throws BasicException when the queue's configuration makes no sense.
    void start();

    /// Ends the drain within one exchange and waits for that. What was not delivered stays in the queue.
    void stop();

    /// Looks at the queue now, instead of at the next look or the end of a back-off.
    void wakeUp();

    /// Waits until nothing is left that can be delivered (dead letters do not count), at most `timeout`. Returns false
    /// if something is left then.
    [[nodiscard]] bool waitUntilDrained(std::chrono::milliseconds timeout);

    /// Why the drain could not work when it last tried, as a text for the cashier; empty when it could, and before it
    /// has tried. A service that accepts nothing is not such a problem; see QueueStatus::lastError.
    QString problem() const;

private:
    void run(const QueueSettings &settings);
    void work(QueueDelivery &delivery, quint64 seen);
    void reportDrained(quint64 seen);
    void reportProblem(const QString &problem);

    std::chrono::milliseconds m_timeBetweenLooks;
    QHash<QString, QueueHandler> m_handlers;
    std::thread m_thread;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_endBackOffs = false;
    mutable std::mutex m_mutex;
    std::condition_variable m_drained;
    quint64 m_drainedAt = 0; // the signal's count at a look that found nothing deliverable
    QString m_problem;
};
