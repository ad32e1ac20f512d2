// The persistent queue of requests that must not be lost: the side that empties it.
#pragma once

#include <poshost_export.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <chrono>
#include <functional>
#include <memory>

/// Hands the stored events to the handlers of their owners, on a thread and a database connection of its own. An event
/// is deleted only after its handler has returned. A handler that throws RejectionException has the event set aside,
/// with later events of the same order waiting behind it; any other exception has it tried again, without a limit,
/// after an exponential back-off with full jitter. Delivery is at least once: handlers must be idempotent.
class POSHOST_EXPORT QueueDrain
{
public:
    /// Sends one event. Called on the drain's thread; must not call the drain.
    using Handler = std::function<void(const QJsonObject &event)>;

    /// Works on the configured database, see DBQueueBroker. Does nothing until start().
    QueueDrain();

    /// Stops the drain.
    ~QueueDrain();
    Q_DISABLE_COPY_MOVE(QueueDrain)

    /// Who sends the events of `owner`. To be set before start(); events of owners without a handler stay in the queue.
    void setHandler(const QString &owner, const Handler &handler);

    /// Throws BasicException when the queue's configuration makes no sense.
    void start();

    /// Ends the drain within one exchange and waits for that. What was not delivered stays in the queue.
    void stop();

    /// Looks at the queue now, instead of at the next look or the end of a back-off.
    void wakeUp();

    /// Waits until nothing is left that can be delivered (events set aside do not count), at most `timeout`. False: it
    /// was not reached in time.
    [[nodiscard]] bool waitUntilDrained(std::chrono::milliseconds timeout);

private:
    class Worker;
    std::unique_ptr<Worker> m_worker;
};
