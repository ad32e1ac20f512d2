// Probing a failing receiver instead of hammering it.
#include "circuitbreaker.h"

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
    // An end further away than the longest back-off was computed before somebody put the clock back.
    const bool pausing = m_until > now && m_until <= now + BackOff::longest;
    return pausing ? m_newest : 0;
}
