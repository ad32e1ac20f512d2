// The database that holds the queue: what each kind of database does in its own way.
// Used on the thread that opened it, and on no other.
#pragma once

#include "queuesettings.h"

#include <database/databaseconnection.h>

#include <QtCore/QRandomGenerator>

#include <limits>
#include <memory>

/// Identifies the drain that holds a claim: a random number and a lock on it. The lock goes when the drain dies, so a
/// dead drain is recognised without time-outs. All operations throw BasicException when they fail.
class QueueLease
{
public:
    virtual ~QueueLease() = default;
    Q_DISABLE_COPY_MOVE(QueueLease)

    qint64 id() const { return m_id; }

    /// Takes the lock if it is not held, or was lost. To be called before anything is claimed.
    virtual void hold(DatabaseConnection &connection) = 0;

    /// Whether another live drain holds `lease`. To be called in the transaction that releases a dead drain's claims:
    /// until that ends, a drain that was found dead cannot take its lease back on PostgreSQL.
    virtual bool isHeldByOther(qint64 lease, DatabaseConnection &connection) const = 0;

protected:
    QueueLease() = default;

private:
    // Below the largest file offset, because SQLite's lease locks the byte at this offset. 63 random bits do not
    // repeat.
    qint64 m_id = QRandomGenerator::system()->bounded(std::numeric_limits<qint64>::max());
};

class QueueDatabase
{
public:
    /// Open the queue. Throw MissingDatabase when it is missing and must not be made, and BasicException when it cannot
    /// be opened or this program must not write to what is there.
    static std::unique_ptr<QueueDatabase> openSqlite(const QueueSettings &settings, DatabaseConnection::Commits commits,
                                                     DatabaseConnection::IfMissing ifMissing);
    static std::unique_ptr<QueueDatabase> openPostgres(const QueueSettings &settings,
                                                       DatabaseConnection::Commits commits,
                                                       DatabaseConnection::IfMissing ifMissing);
    virtual ~QueueDatabase() = default;
    Q_DISABLE_COPY_MOVE(QueueDatabase)

    virtual DatabaseConnection &connection() = 0;
    virtual std::unique_ptr<QueueLease> newLease() const = 0;

    /// SQL that ends the query for the next events, so that two drains never claim the same one; empty where there is
    /// one writer at a time.
    virtual QStringView rowLock() const = 0;

    /// Keep others from changing this order, or those of the claimed events, until the transaction ends; to be called
    /// before the order is read. Otherwise a push could overlook that its predecessor has just been delivered, and its
    /// event would never become a head.
    virtual void lockOrder(const QString &owner, const QString &basket) = 0;
    virtual void lockOrdersOf(const QueueLease &lease) = 0;

    /// The row of the summary that this connection updates.
    virtual int summaryRow() const = 0;

    /// An event's text as a value to be bound and as a column to be read, both as UTF-8 if the driver can: SQLite
    /// would convert every character.
    virtual QStringView eventValue() const = 0;
    virtual QStringView eventColumn() const = 0;

protected:
    QueueDatabase() = default;
};
