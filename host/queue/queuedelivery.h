// The drain's work without its thread: one event after the other, to its owner's handler and out of the database.
// Used on the thread that has made it, and on no other.
#pragma once

#include "backoff.h"
#include "queueaccess.h"
#include "queuelease.h"
#include "servicepace.h"

#include <poshost_export.h>
#include <queue/queuedrain.h>

#include <QtCore/QHash>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class POSHOST_EXPORT QueueDelivery
{
public:
    /// What a test replaces.
    struct Environment
    {
        std::function<QueueTime()> now; ///< Default: the system's clock.
        std::function<double()> random; ///< See BackOff.
    };

    /// Opens nothing yet.
    QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueDrain::Handler> &handlers,
                  const Environment &environment = {});
    ~QueueDelivery();
    Q_DISABLE_COPY_MOVE(QueueDelivery)

    /// Sends the next event that is due, if there is one, and records what has become of it. True: an event was sent,
    /// there may be more. False: nothing is due now. Throws BasicException when the database fails; the next call opens
    /// it again and, before anything else, records what could not be recorded, so that nothing is sent twice.
    bool step();

    /// Makes everything due that waits for the end of a back-off.
    void endBackOffs();

    /// True when step() may have something to send later.
    bool hasDeliverable();

    /// To be called when step() has found nothing to do: makes what was recorded durable.
    void rest();

private:
    enum class Result { Accepted, Failed, Refused };
    struct Receiver
    {
        QString name;
        QueueDrain::Handler handler;
        ServicePace pace;
    };
    struct Outcome
    {
        std::size_t receiver;
        QueueClaim claim;
        Result result;
        QString error;
    };

    bool stepOf(QueueStore &store, std::size_t receiver);
    Outcome send(std::size_t receiver, const QueueClaim &claim) const;
    void record(QueueStore &store);
    void write(QueueStore &store, const Outcome &outcome) const;
    void log(const Outcome &outcome) const;
    void checkpoint(QueueStore &store);

    Environment m_environment;
    BackOff m_backOff;
    std::vector<Receiver> m_receivers;
    std::size_t m_turn = 0;
    QueueAccess m_access;
    std::unique_ptr<QueueLease> m_lease; // outlives the store that m_access may close: what is in flight stays ours
    std::optional<Outcome> m_unrecorded;
    int m_sinceCheckpoint = 0; // events that were taken
};
