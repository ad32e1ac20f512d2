// When to try again what has failed: each event after a back-off, a receiver that is down behind a circuit breaker.
#pragma once

#include <poshost_export.h>

#include <QtCore/QtGlobal>

#include <chrono>
#include <functional>

using QueueTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// Exponential back-off with full jitter: a random time between nothing and a bound that doubles with each failure, so
/// that tills which lost the service at the same moment do not come back at the same moment.
class POSHOST_EXPORT BackOff
{
public:
    static constexpr std::chrono::milliseconds base{500};
    static constexpr std::chrono::milliseconds longest{60'000};

    /// `random` gives numbers from 0 up to, not including, 1; without it they come from Qt's generator.
    explicit BackOff(std::function<double()> random = {});

    /// The wait after the `failures`th failure in a row, counted from 1.
    std::chrono::milliseconds delay(int failures) const;

private:
    std::function<double()> m_random;
};

/// A failure may be the fault of one event or of the whole service; only the next event tells. So after a first failure
/// another event is sent at once, as a probe. If it gets through, the first event was at fault. If it fails too, the
/// service is taken to be down and the circuit opens: everything stored so far is held back for a time that grows with
/// each further failure, then one event is the next probe. An event pushed meanwhile is a probe of its own: one request
/// per new event, to find out at the next sale that the service is back.
class CircuitBreaker
{
public:
    explicit CircuitBreaker(const BackOff &backOff) : m_backOff(backOff) {}

    /// The service has answered, with success or with a refusal.
    void answered();

    /// The service has not answered. `newest`: the id of the event pushed last; heldBack() holds back all up to it.
    void failed(QueueTime now, qint64 newest);

    /// Events up to this id are not to be sent now; 0 when all may be.
    qint64 heldBack(QueueTime now) const;

    /// Lets the next event through.
    void endPause() { m_until = {}; }

private:
    BackOff m_backOff;
    int m_failures = 0;
    QueueTime m_until;
    qint64 m_newest = 0;
};
