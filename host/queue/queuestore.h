// The queue's operations on stored events; docs/queue.md has the tables and states.
// Used on the thread that created it, and on no other.
#pragma once

#include "backoff.h"
#include "queuedatabase.h"
#include "queuestatus.h"

#include <log4qt/logger.h>

#include <functional>
#include <optional>
#include <span>
#include <vector>

/// The logger "poshost.queue".
Log4Qt::Logger *queueLogger();

/// The system's clock.
QueueTime currentQueueTime();

/// Converts a time to its stored form, milliseconds since 1970 UTC, and back. dateTimeOf() is invalid for null and 0.
qint64 storedTime(QueueTime time);
QDateTime dateTimeOf(const QVariant &stored);

/// Prefix of the order that is made for an event that stands alone.
inline constexpr QStringView loneOrder = u"lone:";

/// An event that a drain has taken, to be sent by nobody else.
struct QueueClaim
{
    qint64 id = 0;
    QString owner;
    QString basket;   ///< Its order.
    int attempts = 0; ///< This one included.
    QByteArray event; ///< The JSON text as it was stored.
};

/// All operations throw BasicException when the database fails; nothing is changed then, unless the commit itself
/// failed.
class QueueStore
{
public:
    /// Opens the database. If it is missing, creates it or, with IfMissing::Fail, throws MissingDatabase.
    QueueStore(const QueueSettings &settings, DatabaseConnection::Commits commits,
               DatabaseConnection::IfMissing ifMissing = DatabaseConnection::IfMissing::Create);

    DatabaseConnection &connection() { return m_connection; }

    /// A lease for a drain on this database.
    std::unique_ptr<QueueLease> newLease() const { return m_database->newLease(); }

    /// `basket`: the order; empty for an event that stands alone.
    void push(const QString &owner, const QString &basket, const QByteArray &event, QueueTime now);
    QueueStatus status();

    /// Throws unless events can be stored now; a full disk shows only with `commit`, which costs a sync.
    void requireWritable(bool commit);

    /// Takes at most `most` heads of `owner`: events that somebody has asked for, then those never tried, then those
    /// due longest. If `after` is not 0: only those asked for or, if there are none, events never tried with ids above
    /// `after`. Before that, events whose drain has died are released. Not to be called while an event of this lease is
    /// being sent.
    std::vector<QueueClaim> claim(const QString &owner, QueueLease &lease, QueueTime now, qint64 after, int most);

    /// Runs `operation` in a transaction: everything it changes is stored, or nothing. lockOrders(), accepted(),
    /// failed(), refused(), release(), releaseWhatNobodyIsSending() and changeOrder() may be called only inside one.
    void record(const std::function<void()> &operation);

    /// To be called before claims are settled. All locks on orders come before all changes to the summary, as in a
    /// push; otherwise the two could block each other.
    void lockOrders(const QueueLease &lease);

    /// Deletes the events of `claims`, all of which were accepted; those that the lease no longer holds stay, with a
    /// warning. To be called after failed() and refused(), because it releases the lease's other claims.
    void accepted(std::span<const QueueClaim> claims, const QueueLease &lease, QueueTime now);

    /// Records a failed attempt; the event is not due again before `next`.
    void failed(const QueueClaim &claim, const QueueLease &lease, const QString &error, QueueTime now, QueueTime next);

    /// Makes the event a dead letter: the service has refused it for good.
    void refused(const QueueClaim &claim, const QueueLease &lease, const QString &reason, QueueTime now);

    /// Gives back claims that were not sent.
    void release(std::span<const QueueClaim> claims, const QueueLease &lease);

    /// Makes all waiting events of `owner` due.
    void endBackOffs(const QString &owner);

    /// True when there are events of `owner` that are neither dead letters nor wait behind one.
    bool hasDeliverable(const QString &owner);

    /// The highest id of a stored event; 0 when there is none.
    qint64 newest();

    /// Gives back the claims of drains that have died, and those of `lease` itself.
    void releaseWhatNobodyIsSending(const QueueLease &lease);

    /// Runs an operation that changes states within an order, or adds or removes events anywhere in it, and keeps head
    /// and summary in step.
    void changeOrder(const QString &owner, const QString &basket, const std::function<void()> &operation);

private:
    struct Counts
    {
        qint64 waiting = 0;
        qint64 blocked = 0;
    };

    std::vector<QueueClaim> claimed(const QueueLease &lease);
    void releaseOthers(std::span<const QueueClaim> claims, const QueueLease &lease);
    Counts measure(const QString &owner, const QString &basket);
    void count(const Counts &change);
    void correctHead(const QString &owner, const QString &basket);
    bool settle(QStringView sql, const QVariantList &values, const QueueClaim &claim);
    void noteError(const QString &error, QueueTime now);

    std::unique_ptr<QueueDatabase> m_database;
    DatabaseConnection &m_connection;
    // Statements as this kind of database has them:
    QString m_push;
    QString m_claimDue;
    QString m_claimTooFar;
    QString m_claimAskedFor;
    QString m_claimPushedSince;
    QString m_claimed;
};

/// A store that is opened when it is needed: at the first use, and again after a failure. So a till can start without
/// its database, and goes on when the disk or the server is back.
class QueueAccess
{
public:
    QueueAccess(const QueueSettings &settings, DatabaseConnection::Commits commits)
        : m_settings(settings), m_commits(commits)
    {}

    /// Runs `operation` on the open database and returns what it returns. Throws what it throws, and BasicException
    /// when the database cannot be opened; the database is closed then.
    template <class Operation>
    auto use(Operation operation)
    {
        try {
            return operation(opened());
        } catch (...) {
            m_store.reset();
            throw;
        }
    }

private:
    QueueStore &opened()
    {
        if (m_store && !m_store->connection().isUsable())
            m_store.reset();
        if (!m_store)
            m_store.emplace(m_settings, m_commits);
        return *m_store;
    }

    QueueSettings m_settings;
    DatabaseConnection::Commits m_commits;
    std::optional<QueueStore> m_store;
};
