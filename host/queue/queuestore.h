// The stored events: what is done to them, one transaction each. See docs/queue.md for the states.
// Used on the thread that has made it, and on no other.
#pragma once

#include "queuedatabase.h"

#include <queue/dbqueuebroker.h>
#include <queue/queueadmin.h>

#include <chrono>
#include <functional>
#include <limits>
#include <span>
#include <vector>

using QueueTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// The system's clock.
QueueTime currentQueueTime();

/// An event that a drain has taken, to be sent by nobody else.
struct QueueClaim
{
    qint64 id = 0;
    QString basket;   ///< The order; empty when the event stands alone.
    int attempts = 0; ///< This one included.
    QByteArray event; ///< The JSON text as it was stored.
};

/// All operations throw BasicException when the database fails; nothing is changed then.
class QueueStore
{
public:
    /// Opens the database and creates it if it is missing.
    QueueStore(const QueueSettings &settings, DatabaseConnection::Commits commits,
               DatabaseConnection::Missing missing = DatabaseConnection::Missing::IsMade);

    /// False when the database has to be opened again before anything is stored.
    bool isUsable() { return m_connection.isUsable(); }

    /// A lease for a drain on this database.
    std::unique_ptr<QueueLease> newLease() const;

    void push(const QString &owner, const QString &basket, const QByteArray &event, QueueTime now);
    DBQueueBroker::Status status();

    /// Takes at most `most` events of `owner` that are to be sent next, in order of their ids: such whose order has
    /// nothing before them and that are not in a back-off, among those with an id above `after`; those that have been
    /// tried least come first. So no two are of one order. Before that, events whose drain has died are taken from it.
    /// Not to be called while an event of this lease is being sent.
    std::vector<QueueClaim> claim(const QString &owner, QueueLease &lease, QueueTime now, qint64 after, int most);

    /// Runs `operation`, which tells by the following operations what has become of the claimed events; all of it is
    /// stored, or nothing.
    void record(const std::function<void()> &operation);

    /// The first events of a claim were accepted: deletes them.
    void accepted(std::span<const QueueClaim> claims, const QueueLease &lease);

    /// The event could not be sent; not before `next` again.
    void failed(const QueueClaim &claim, const QueueLease &lease, const QString &error, QueueTime next);

    /// The event was refused for good: sets it aside.
    void refused(const QueueClaim &claim, const QueueLease &lease, const QString &reason, QueueTime now);

    /// The claim is settled: gives back what was not sent.
    void release(const QueueLease &lease);

    /// Makes all waiting events of `owner` due.
    void endBackOffs(const QString &owner);

    /// True when events of `owner` are left that are not set aside and do not wait behind such a one.
    bool hasDeliverable(const QString &owner);

    /// The id of the event that was pushed last of those that are stored; 0 when there is none.
    qint64 newest();

    /// Makes lazy commits durable, see DatabaseConnection.
    void checkpoint() { m_connection.checkpoint(); }

    /// Which events the operations for QueueAdmin are about: by default all.
    struct IdRange
    {
        qint64 first = 0;
        qint64 last = std::numeric_limits<qint64>::max();
    };

    /// For QueueAdmin: calls `reader` with each stored event, oldest first.
    using EntryReader = std::function<void(const QueueAdmin::Entry &entry, const QByteArray &event)>;
    void readEntries(IdRange ids, const EntryReader &reader);

    /// For QueueAdmin: makes the events that were set aside due anew; returns how many.
    int retry(IdRange ids);

    /// For QueueAdmin: false when the event does not exist, is being sent, or was discarded before.
    bool discard(qint64 id, const QString &reason, const QueueLease &lease, QueueTime now);

private:
    void releaseWhatNobodyIsSending(const QueueLease &lease);
    std::vector<QueueClaim> claimed(const QueueLease &lease);
    void settle(QStringView sql, const QVariantList &values, std::span<const QueueClaim> claims);
    int changeAlone(QStringView sql, const QVariantList &values);

    std::unique_ptr<QueueDatabase> m_database;
    DatabaseConnection &m_connection;
    QString m_firstDue; // statements as this kind of database has them
    QString m_claim;
    QString m_claimed;
};
