// How fast one receiver of events is tried while it fails.
#pragma once

#include "backoff.h"
#include "queuestore.h"

/// A failure may be the fault of one event or of the whole service; only the next event tells. So after a first failure
/// one other event is sent at once, as a probe. If it gets through, the fault was the event's own. If it fails too, the
/// service is taken to be down, and all events stored so far are held back for a time that grows with each further
/// failure; then one of them is the next probe. An event pushed during that time is a probe of its own: that costs one
/// request for each new event and finds out at the next sale that the service is back.
class ServicePace
{
public:
    explicit ServicePace(const BackOff &backOff) : m_backOff(backOff) {}

    /// The service has answered, with success or with a refusal.
    void answered();

    /// It has not; `newest` is the id of the event that was pushed last.
    void failed(QueueTime now, qint64 newest);

    /// Events up to this id are not to be sent now; 0 when all may be.
    qint64 heldBack(QueueTime now) const;

    void endPause() { m_until = {}; }

private:
    BackOff m_backOff;
    int m_failures = 0;
    QueueTime m_until;
    qint64 m_newest = 0;
};
