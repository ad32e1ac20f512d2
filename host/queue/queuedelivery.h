// The drain's work without its thread: one run of events after the other, to their owner's handler and out of the
// database.
// Used on the thread that has made it, and on no other.
#pragma once

#include "backoff.h"
#include "queueaccess.h"
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
    struct Environment
    {
        std::function<QueueTime()> now;   ///< Default: the system's clock.
        std::function<double()> random;   ///< See BackOff.
        std::function<bool()> isStopping; ///< True: the step in hand sends no further event. Default: never.
    };

    /// Opens nothing yet.
    QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueDrain::Handler> &handlers,
                  const Environment &environment = {});
    ~QueueDelivery();
    Q_DISABLE_COPY_MOVE(QueueDelivery)

    /// Sends the next event that is due, if there is one, and records what has become of it; a run of events at once
    /// where they are accepted quickly. True: an event was sent, there may be more. False: nothing is due now. Throws
    /// BasicException when the database fails; the next call opens it again and, before anything else, records what
    /// could not be recorded, so that nothing is sent twice.
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
        int runLength = 1; ///< How many events are claimed at once.
    };
    struct Outcome
    {
        Result result;
        QString error;
    };
    /// What was claimed at once. All that were sent before the last one were accepted.
    struct Run
    {
        std::size_t receiver;
        std::vector<QueueClaim> claims;
        std::size_t sent = 0;
        Outcome last = {};
    };

    bool stepOf(QueueStore &store, std::size_t receiver);
    void send(Run &run);
    Outcome send(const Receiver &receiver, const QueueClaim &claim) const;
    static void log(const QString &receiver, const QueueClaim &claim, const Outcome &outcome);
    void record(QueueStore &store);
    void write(QueueStore &store, const Run &run) const;
    void checkpoint(QueueStore &store);

    Environment m_environment;
    BackOff m_backOff;
    std::vector<Receiver> m_receivers;
    std::size_t m_turn = 0;
    QueueAccess m_access;
    std::unique_ptr<QueueLease> m_lease; // outlives the store that m_access may close: what is in flight stays ours
    std::optional<Run> m_unrecorded;
    int m_sinceCheckpoint = 0; // events that were taken
};
