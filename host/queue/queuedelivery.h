// The drain's work without its thread: batch after batch of events, to their owner's handler and out of the database.
// Used on the thread that created it, and on no other.
#pragma once

#include "queuehandler.h"
#include "queuestore.h"

#include <poshost_export.h>

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
        std::function<bool()> isStopping; ///< True: the current step sends no further event. Default: never.
    };

    /// Opens nothing yet.
    QueueDelivery(const QueueSettings &settings, const QHash<QString, QueueHandler> &handlers,
                  const Environment &environment = {});
    ~QueueDelivery();
    Q_DISABLE_COPY_MOVE(QueueDelivery)

    /// Sends the next event that is due, or a batch as long as events are accepted quickly, and records the outcome.
    /// True: an event was sent, there may be more. False: nothing is due now. Throws BasicException when the database
    /// fails; the next call opens it again and, before anything else, records what could not be recorded, so that
    /// nothing is sent twice.
    bool step();

    /// Makes everything due that waits for the end of a back-off.
    void endBackOffs();

    /// True when step() may have something to send later.
    bool hasDeliverable();

    /// Checkpoints the log. To be called when step() has found nothing to do.
    void checkpointWhenIdle();

private:
    enum class Result { Accepted, Failed, Refused };
    struct Receiver
    {
        QString name;
        QueueHandler handler;
        CircuitBreaker breaker;
        int batchSize = 1; ///< How many events are claimed at once.
    };
    struct Outcome
    {
        Result result;
        QString error;
    };
    /// What was claimed at once. All that were sent before the last one were accepted.
    struct Batch
    {
        std::size_t receiver;
        std::vector<QueueClaim> claims;
        std::size_t sent = 0;
        Outcome last = {};
    };

    void holdLease(QueueStore &store);
    bool stepOf(QueueStore &store, std::size_t receiver);
    void send(Batch &batch);
    Outcome send(const Receiver &receiver, const QueueClaim &claim) const;
    static void log(const QString &receiver, const QueueClaim &claim, const Outcome &outcome);
    void record(QueueStore &store);
    void write(QueueStore &store, const Batch &batch) const;
    void checkpoint(QueueStore &store);

    Environment m_environment;
    BackOff m_backOff;
    std::vector<Receiver> m_receivers;
    std::size_t m_turn = 0;
    QueueAccess m_access;
    std::unique_ptr<QueueLease> m_lease; // outlives the store that m_access may close: what is in flight stays ours
    std::optional<Batch> m_unrecorded;
    int m_sinceCheckpoint = 0; // events that were taken
};
