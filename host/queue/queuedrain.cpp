// The drain's thread: works while there is something to do, and sleeps until a push, a call or the next look.
#include "queuedrain.h"

#include "queuedelivery.h"
#include "queuesignal.h"

#include <core/basicexception.h>

#include <QtCore/QScopeGuard>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

class QueueDrain::Worker
{
public:
    explicit Worker(std::chrono::milliseconds timeBetweenLooks) : m_timeBetweenLooks(timeBetweenLooks) {}
    ~Worker() { stop(); }
    Q_DISABLE_COPY_MOVE(Worker)

    void start();
    void stop();
    void wakeUp();
    bool waitUntilDrained(std::chrono::milliseconds timeout);

    QHash<QString, Handler> handlers;

private:
    void run(const QueueSettings &settings);
    void work(QueueDelivery &delivery, quint64 seen);
    void reportDrained(quint64 seen);

    std::chrono::milliseconds m_timeBetweenLooks;
    std::thread m_thread;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_endBackOffs = false;
    std::mutex m_mutex;
    std::condition_variable m_drained;
    quint64 m_drainedAt = 0; // the signal's count at a look that found nothing deliverable
};

void QueueDrain::Worker::start()
{
    if (m_thread.joinable())
        return;
    m_stopping = false;
    m_thread = std::thread(&Worker::run, this, QueueSettings::configured());
}

void QueueDrain::Worker::stop()
{
    if (!m_thread.joinable())
        return;
    m_stopping = true;
    QueueSignal::instance().raise();
    m_thread.join();
}

void QueueDrain::Worker::wakeUp()
{
    m_endBackOffs = true;
    QueueSignal::instance().raise();
}

bool QueueDrain::Worker::waitUntilDrained(std::chrono::milliseconds timeout)
{
    const quint64 asked = QueueSignal::instance().raise();
    std::unique_lock lock(m_mutex);
    return m_drained.wait_for(lock, timeout, [this, asked] { return m_drainedAt >= asked; });
}

void QueueDrain::Worker::run(const QueueSettings &settings)
{
    QueueDelivery delivery(settings, handlers, {{}, {}, [this] { return m_stopping.load(); }});
    const BackOff backOff;
    int failures = 0;
    while (!m_stopping) {
        const quint64 seen = QueueSignal::instance().count();
        std::chrono::milliseconds pause = m_timeBetweenLooks;
        try {
            work(delivery, seen);
            failures = 0;
        } catch (const BasicException &) { // logged where it was thrown
            pause += backOff.delay(++failures);
        }
        if (!m_stopping)
            QueueSignal::instance().wait(seen, pause);
    }
}

void QueueDrain::Worker::work(QueueDelivery &delivery, quint64 seen)
{
    do {
        if (m_endBackOffs.exchange(false)) {
            auto forgotten = qScopeGuard([this] { m_endBackOffs = true; });
            delivery.endBackOffs();
            forgotten.dismiss();
        }
    } while (delivery.step() && !m_stopping);
    delivery.checkpointWhenIdle();
    if (!m_stopping && !delivery.hasDeliverable())
        reportDrained(seen);
}

void QueueDrain::Worker::reportDrained(quint64 seen)
{
    const std::scoped_lock lock(m_mutex);
    m_drainedAt = seen;
    m_drained.notify_all();
}

QueueDrain::QueueDrain(std::chrono::milliseconds timeBetweenLooks)
    : m_worker(std::make_unique<Worker>(timeBetweenLooks))
{}

QueueDrain::~QueueDrain() = default;

void QueueDrain::setHandler(const QString &owner, const Handler &handler)
{
    m_worker->handlers.insert(owner, handler);
}

void QueueDrain::start()
{
    m_worker->start();
}

void QueueDrain::stop()
{
    m_worker->stop();
}

void QueueDrain::wakeUp()
{
    m_worker->wakeUp();
}

bool QueueDrain::waitUntilDrained(std::chrono::milliseconds timeout)
{
    return m_worker->waitUntilDrained(timeout);
}
