// Stops sending to a receiver that is down.
#pragma once

#include "backoff.h"
#include "queuestore.h"

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

    /// It has not; `newest` is the id of the event that was pushed last.
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
