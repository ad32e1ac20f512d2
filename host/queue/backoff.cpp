// Waiting longer with each failure, and probing a failing receiver instead of hammering it.
#include "backoff.h"

#include <QtCore/QRandomGenerator>

#include <algorithm>

BackOff::BackOff(std::function<double()> random) : m_random(std::move(random))
{
    if (!m_random)
        m_random = [] { return QRandomGenerator::global()->generateDouble(); };
}

std::chrono::milliseconds BackOff::delay(int failures) const
{
    std::chrono::milliseconds bound = base;
    for (int failure = 1; failure < failures && bound < longest; ++failure)
        bound *= 2;
    const auto most = static_cast<double>(std::min(bound, longest).count());
    return std::chrono::milliseconds(static_cast<qint64>(most * m_random()));
}

void CircuitBreaker::answered()
{
    m_failures = 0;
    m_until = {};
}

void CircuitBreaker::failed(QueueTime now, qint64 newest)
{
    ++m_failures;
    m_newest = newest;
    if (m_failures > 1)
        m_until = now + m_backOff.delay(m_failures - 1);
}

qint64 CircuitBreaker::heldBack(QueueTime now) const
{
    // An end further ahead than the longest back-off was computed before the clock was set back.
    const bool pausing = m_until > now && m_until <= now + BackOff::longest;
    return pausing ? m_newest : 0;
}
