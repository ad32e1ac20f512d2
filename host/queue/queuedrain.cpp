// The drain's thread: works while there is something to do, and sleeps until a push, a call or the next look.
#include "queuedrain.h"

#include "queuedelivery.h"
#include "queuesignal.h"

#include <core/basicexception.h>

#include <QtCore/QScopeGuard>

QueueDrain::QueueDrain(std::chrono::milliseconds timeBetweenLooks) : m_timeBetweenLooks(timeBetweenLooks)
{}

QueueDrain::~QueueDrain()
{
    stop();
}

void QueueDrain::setHandler(const QString &owner, const QueueHandler &handler)
{
    m_handlers.insert(owner, handler);
}

void QueueDrain::start()
{
    if (m_thread.joinable())
        return;
    m_stopping = false;
    m_thread = std::thread(&QueueDrain::run, this, QueueSettings::configured());
}

void QueueDrain::stop()
{
    if (!m_thread.joinable())
        return;
    m_stopping = true;
    QueueSignal::instance().raise();
    m_thread.join();
}

void QueueDrain::wakeUp()
{
    m_endBackOffs = true;
    QueueSignal::instance().raise();
}

bool QueueDrain::waitUntilDrained(std::chrono::milliseconds timeout)
{
    const quint64 asked = QueueSignal::instance().raise();
    std::unique_lock lock(m_mutex);
    return m_drained.wait_for(lock, timeout, [this, asked] { return m_drainedAt >= asked; });
}

QString QueueDrain::problem() const
{
    const std::scoped_lock lock(m_mutex);
    return m_problem;
}

void QueueDrain::run(const QueueSettings &settings)
{
    QueueDelivery delivery(settings, m_handlers, {{}, {}, [this] { return m_stopping.load(); }});
    const BackOff backOff;
    int failures = 0;
    while (!m_stopping) {
        const quint64 seen = QueueSignal::instance().count();
        std::chrono::milliseconds pause = m_timeBetweenLooks;
        try {
            work(delivery, seen);
            failures = 0;
            reportProblem({});
        } catch (const BasicException &error) { // logged where it was thrown
            reportProblem(error.text().ru());
            pause += backOff.delay(++failures);
        }
        if (!m_stopping)
            QueueSignal::instance().wait(seen, pause);
    }
}

void QueueDrain::work(QueueDelivery &delivery, quint64 seen)
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

void QueueDrain::reportDrained(quint64 seen)
{
    const std::scoped_lock lock(m_mutex);
    m_drainedAt = seen;
    m_problem.clear();
    m_drained.notify_all();
}

void QueueDrain::reportProblem(const QString &problem)
{
    const std::scoped_lock lock(m_mutex);
    m_problem = problem;
}
