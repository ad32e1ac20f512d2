// The queue's operations on its database.
#include "queuestore.h"

#include "backoff.h"
#include "queuesql.h"

#include <database/databaseerror.h>

#include <QtCore/QList>

using namespace Qt::Literals::StringLiterals;

namespace {

// How far behind the first event of a run the others are looked for; a sale leaves several events of one order.
constexpr int idsPerClaim = 8;

qint64 number(QueueTime time)
{
    return time.time_since_epoch().count();
}

QString dueText(QStringView what, QStringView which, const QueueDatabase &database)
{
    return queuesql::due.toString().arg(what, which, database.rowLock());
}

} // namespace

QueueTime currentQueueTime()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

QueueStore::QueueStore(const QueueSettings &settings, DatabaseConnection::Commits commits,
                       DatabaseConnection::Missing missing)
    : m_database(QueueDatabase::open(settings, commits, missing)),
      m_connection(m_database->connection()),
      m_firstDue(dueText(u"e.id, e.attempts", queuesql::firstOfRun, *m_database)),
      m_claim(queuesql::claim.toString().arg(dueText(u"?, e.id", queuesql::run, *m_database))),
      m_claimed(queuesql::claimed.toString().arg(m_database->eventColumn()))
{}

std::unique_ptr<QueueLease> QueueStore::newLease() const
{
    return m_database->newLease();
}

void QueueStore::push(const QString &owner, const QString &basket, const QByteArray &event, QueueTime now)
{
    const QVariant order = basket.isEmpty() ? QVariant() : basket;
    changeAlone(queuesql::push, {owner, order, QString::fromUtf8(event), number(now)});
}

DBQueueBroker::Status QueueStore::status()
{
    DBQueueBroker::Status status;
    m_connection.read(queuesql::status, {}, [&status](const QSqlQuery &row) {
        status.setAside = row.value(2).toInt();
        status.waiting = row.value(0).toInt() - status.setAside;
        if (!row.isNull(1))
            status.oldest = QDateTime::fromMSecsSinceEpoch(row.value(1).toLongLong());
    });
    return status;
}

std::vector<QueueClaim> QueueStore::claim(const QString &owner, QueueLease &lease, QueueTime now, qint64 after,
                                          int most)
{
    lease.hold(m_connection);
    const QVariant due = number(now);
    const QVariant tooFar = number(now + BackOff::longest);
    qint64 first = 0;
    int attempts = 0;
    DatabaseTransaction transaction(m_connection);
    releaseWhatNobodyIsSending(lease);
    m_connection.read(m_firstDue, {owner, after, due, tooFar, 1}, [&](const QSqlQuery &row) {
        first = row.value(0).toLongLong();
        attempts = row.value(1).toInt();
    });
    std::vector<QueueClaim> claims;
    if (first != 0) {
        m_connection.change(m_claim,
                            {lease.id(), owner, attempts, first, first + most * idsPerClaim, due, tooFar, most});
        claims = claimed(lease);
    }
    transaction.commit();
    return claims;
}

std::vector<QueueClaim> QueueStore::claimed(const QueueLease &lease)
{
    std::vector<QueueClaim> claims;
    m_connection.read(m_claimed, {lease.id()}, [&claims](const QSqlQuery &row) {
        claims.push_back(
            {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toInt() + 1, row.value(3).toByteArray()});
    });
    return claims;
}

// Of drains that have died; and the caller's own, who is sending nothing now: a claim whose commit was stored, but not
// answered.
void QueueStore::releaseWhatNobodyIsSending(const QueueLease &lease)
{
    QList<qint64> found;
    m_connection.read(queuesql::leases, {},
                      [&found](const QSqlQuery &row) { found.append(row.value(0).toLongLong()); });
    for (const qint64 one : found)
        if (one == lease.id() || !lease.isHeldByOther(one, m_connection)) {
            m_connection.change(queuesql::countAttempts, {one});
            m_connection.change(queuesql::releaseLease, {one});
        }
}

void QueueStore::record(const std::function<void()> &operation)
{
    DatabaseTransaction transaction(m_connection);
    operation();
    transaction.commit();
}

void QueueStore::accepted(std::span<const QueueClaim> claims, const QueueLease &lease)
{
    if (!claims.empty())
        settle(queuesql::accepted, {lease.id(), claims.back().id}, claims);
}

void QueueStore::failed(const QueueClaim &claim, const QueueLease &lease, const QString &error, QueueTime next)
{
    settle(queuesql::failed, {error, number(next), lease.id(), claim.id}, {&claim, 1});
}

void QueueStore::refused(const QueueClaim &claim, const QueueLease &lease, const QString &reason, QueueTime now)
{
    settle(queuesql::refused, {reason, number(now), lease.id(), claim.id}, {&claim, 1});
}

void QueueStore::release(const QueueLease &lease)
{
    m_connection.change(queuesql::releaseLease, {lease.id()});
}

void QueueStore::settle(QStringView sql, const QVariantList &values, std::span<const QueueClaim> claims)
{
    const auto changed = static_cast<std::size_t>(m_connection.change(sql, values));
    if (changed != claims.size())
        databaseerror::logger()->warn(u"Очередь запросов: из записей %1–%2 кем-то изменены во время отправки: %3"_s.arg(
            QString::number(claims.front().id), QString::number(claims.back().id),
            QString::number(claims.size() - changed)));
}

int QueueStore::changeAlone(QStringView sql, const QVariantList &values)
{
    DatabaseTransaction transaction(m_connection);
    const int rows = m_connection.change(sql, values);
    transaction.commit();
    return rows;
}

void QueueStore::endBackOffs(const QString &owner)
{
    changeAlone(queuesql::endBackOffs, {owner});
}

bool QueueStore::hasDeliverable(const QString &owner)
{
    return m_connection.value(queuesql::hasDeliverable, {owner}).toBool();
}

qint64 QueueStore::newest()
{
    return m_connection.value(queuesql::newest).toLongLong();
}
