// The till's side of the persistent queue: requests wait on the check while it ends, and when they cannot be stored.
#pragma once

#include <queue/dbqueuebroker.h>
#include <queue/queuestatus.h>

#include <QtCore/QVariant>

#include <functional>
#include <optional>

namespace till {

/// Put in place as Singleton<DBQueueBroker>. Between hold() and release() it hands requests over, otherwise it stores
/// them at once, like its base, and hands over only what could not be stored.
///
/// Why hold back: the drain may deliver a request the moment it is stored. If a loyalty system's commit() stored the
/// posting of an order and the till were killed before it has noted that the check is closed, commit() would run again
/// and meet an order that is posted already. So what an ending wants to send is first written with the check, in the
/// same write that closes it, and put on the queue after that, again and again until the check is in the books.
class EndingQueue : public DBQueueBroker
{
public:
    /// Takes a request in plain variants, fit for the check store and for store().
    using Holder = std::function<void(const QVariant &request)>;

    /// Throws BasicException when the request cannot be stored and there is no holder.
    void push(const QString &owner, const QJsonObject &event, const QString &key) override;

    /// Who takes requests over; null: nobody.
    void setHolder(const Holder &holder) { m_holder = holder; }
    void hold() { m_holding = true; }
    void release() { m_holding = false; }

    /// Stores requests that were handed over. Throws BasicException when that fails; what was stored by then stays on
    /// the queue.
    void store(const QVariantList &requests);

    /// What problem() says now; kept for knownProblem().
    const QString &findProblem();

    /// The last known reason why requests cannot be stored; empty if there is none. Does not access the queue.
    const QString &knownProblem() const { return m_problem; }

    /// What is not accepted yet; nothing while there is a known problem, or if the queue cannot be read.
    std::optional<QueueStatus> statusIfItWorks() const;

private:
    void pushNow(const QString &owner, const QJsonObject &event, const QString &key);

    Holder m_holder;
    bool m_holding = false;
    QString m_problem;
};

/// What is not accepted yet; nothing if the queue cannot be read, which must not keep a receipt from being printed.
std::optional<QueueStatus> queueStatus();

} // namespace till
