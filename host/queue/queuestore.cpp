// The queue's operations on its database.
#include "queuestore.h"

#include "queuesql.h"

#include <database/databaseerror.h>

#include <log4qt/logmanager.h>

#include <QtCore/QList>
#include <QtCore/QUuid>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

QString claimText(QStringView which, const QueueDatabase &database)
{
    return queuesql::claim.toString().arg(which, database.rowLock());
}

void warnOfChange(qint64 first, qint64 last, qint64 changed)
{
    queueLogger()->warn(u"Очередь запросов: из записей %1–%2 кем-то изменены во время отправки: %3"_s.arg(
        QString::number(first), QString::number(last), QString::number(changed)));
}

} // namespace

Log4Qt::Logger *queueLogger()
{
    static Log4Qt::Logger *const logger = Log4Qt::LogManager::logger(u"poshost.queue"_s);
    return logger;
}

QueueTime currentQueueTime()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

qint64 storedTime(QueueTime time)
{
    return time.time_since_epoch().count();
}

QDateTime dateTimeOf(const QVariant &stored)
{
    return stored.toLongLong() > 0 ? QDateTime::fromMSecsSinceEpoch(stored.toLongLong()) : QDateTime();
}

QueueStore::QueueStore(const QueueSettings &settings, DatabaseConnection::Commits commits,
                       DatabaseConnection::IfMissing ifMissing)
    : m_database(settings.driver == QueueSettings::Driver::Sqlite
                     ? QueueDatabase::openSqlite(settings, commits, ifMissing)
                     : QueueDatabase::openPostgres(settings, commits, ifMissing)),
      m_connection(m_database->connection()),
      m_push(queuesql::push.toString().arg(m_database->eventValue())),
      m_claimDue(claimText(queuesql::due, *m_database)),
      m_claimTooFar(claimText(queuesql::tooFar, *m_database)),
      m_claimAskedFor(claimText(queuesql::askedFor, *m_database)),
      m_claimPushedSince(claimText(queuesql::pushedSince, *m_database)),
      m_claimed(queuesql::claimed.toString().arg(m_database->eventColumn()))
{}

void QueueStore::push(const QString &owner, const QString &basket, const QByteArray &event, QueueTime now)
{
    if (basket.isEmpty())
        return push(owner, loneOrder.toString() + QUuid::createUuid().toString(QUuid::WithoutBraces), event, now);
    DatabaseTransaction transaction(m_connection);
    m_database->lockOrder(owner, basket);
    m_connection.change(m_push, {owner, basket, event, storedTime(now)});
    const bool isHead = m_connection.change(queuesql::pushHead, {owner, owner, basket}) > 0;
    const bool isBlocked = !isHead && m_connection.value(queuesql::hasDeadLetter, {owner, basket}).toBool();
    count(isBlocked ? Counts{0, 1} : Counts{1, 0});
    transaction.commit();
}

QueueStatus QueueStore::status()
{
    QueueStatus status;
    const QVariant now = storedTime(currentQueueTime());
    m_connection.read(queuesql::status, {now}, [&status](const QSqlQuery &row) {
        status.waiting = row.value(0).toInt();
        status.blocked = row.value(1).toInt();
        status.lastSuccess = dateTimeOf(row.value(2));
        status.oldest = dateTimeOf(row.value(3));
    });
    m_connection.read(queuesql::lastError, {now}, [&status](const QSqlQuery &row) {
        status.lastError = row.value(0).toString();
        status.lastErrorTime = dateTimeOf(row.value(1));
    });
    return status;
}

void QueueStore::requireWritable(bool commit)
{
    DatabaseTransaction transaction(m_connection);
    m_connection.change(queuesql::tryToWrite);
    m_connection.change(queuesql::endTry);
    if (commit)
        transaction.commit();
}

std::vector<QueueClaim> QueueStore::claim(const QString &owner, QueueLease &lease, QueueTime now, qint64 after,
                                          int most)
{
    lease.hold(m_connection);
    const QVariant id = lease.id();
    const QVariant tooFar = storedTime(now + BackOff::longest);
    DatabaseTransaction transaction(m_connection);
    releaseWhatNobodyIsSending(lease);
    int claims = 0;
    if (after == 0) {
        claims = m_connection.change(m_claimDue, {id, owner, storedTime(now), most});
        if (claims == 0)
            claims = m_connection.change(m_claimTooFar, {id, owner, tooFar, most});
    } else {
        claims = m_connection.change(m_claimAskedFor, {id, owner, most});
        if (claims == 0)
            claims = m_connection.change(m_claimPushedSince, {id, owner, after, most});
    }
    std::vector<QueueClaim> taken;
    if (claims > 0)
        taken = claimed(lease);
    transaction.commit();
    return taken;
}

std::vector<QueueClaim> QueueStore::claimed(const QueueLease &lease)
{
    std::vector<QueueClaim> claims;
    m_connection.read(m_claimed, {lease.id()}, [&claims](const QSqlQuery &row) {
        claims.push_back({row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
                          row.value(3).toInt() + 1, row.value(4).toByteArray()});
    });
    return claims;
}

// The caller finds claims of its own if an earlier commit was stored but never answered.
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

void QueueStore::lockOrders(const QueueLease &lease)
{
    m_database->lockOrdersOf(lease);
}

void QueueStore::accepted(std::span<const QueueClaim> claims, const QueueLease &lease, QueueTime now)
{
    if (claims.empty())
        return;
    releaseOthers(claims, lease);
    m_connection.change(queuesql::acceptedFollowers, {lease.id()});
    m_connection.change(queuesql::acceptedHeads, {lease.id()});
    const int gone = m_connection.change(queuesql::accepted, {lease.id()});
    m_connection.change(queuesql::releaseLease, {lease.id()});
    m_connection.change(queuesql::countAccepted, {gone, storedTime(now), m_database->summaryRow()});
    if (gone != std::ssize(claims))
        warnOfChange(claims.front().id, claims.back().id, std::ssize(claims) - gone);
}

// Nothing may be deleted that was not sent, for instance a claim that was stored although its commit seemed to fail.
void QueueStore::releaseOthers(std::span<const QueueClaim> claims, const QueueLease &lease)
{
    QList<qint64> others;
    m_connection.read(queuesql::idsOfLease, {lease.id()}, [&](const QSqlQuery &row) {
        const qint64 id = row.value(0).toLongLong();
        if (std::ranges::find(claims, id, &QueueClaim::id) == claims.end())
            others.append(id);
    });
    for (const qint64 id : others)
        m_connection.change(queuesql::release, {lease.id(), id});
}

void QueueStore::failed(const QueueClaim &claim, const QueueLease &lease, const QString &error, QueueTime now,
                        QueueTime next)
{
    noteError(error, now);
    if (settle(queuesql::failed, {error, lease.id(), claim.id}, claim))
        m_connection.change(queuesql::postpone, {storedTime(next), claim.id});
    release({&claim, 1}, lease);
}

void QueueStore::refused(const QueueClaim &claim, const QueueLease &lease, const QString &reason, QueueTime now)
{
    noteError(reason, now);
    changeOrder(claim.owner, claim.basket, [&] {
        settle(queuesql::refused, {reason, storedTime(now), lease.id(), claim.id}, claim);
    });
    release({&claim, 1}, lease);
}

void QueueStore::release(std::span<const QueueClaim> claims, const QueueLease &lease)
{
    for (const QueueClaim &claim : claims)
        m_connection.change(queuesql::release, {lease.id(), claim.id});
}

bool QueueStore::settle(QStringView sql, const QVariantList &values, const QueueClaim &claim)
{
    const bool isOurs = m_connection.change(sql, values) > 0;
    if (!isOurs)
        warnOfChange(claim.id, claim.id, 1);
    return isOurs;
}

void QueueStore::noteError(const QString &error, QueueTime now)
{
    m_connection.change(queuesql::noteError, {error, storedTime(now), m_database->summaryRow()});
}

void QueueStore::endBackOffs(const QString &owner)
{
    record([&] { m_connection.change(queuesql::endBackOffs, {owner}); });
}

bool QueueStore::hasDeliverable(const QString &owner)
{
    return m_connection.value(queuesql::hasDeliverable, {owner}).toBool();
}

qint64 QueueStore::newest()
{
    return m_connection.value(queuesql::newest).toLongLong();
}

void QueueStore::changeOrder(const QString &owner, const QString &basket, const std::function<void()> &operation)
{
    m_database->lockOrder(owner, basket);
    m_connection.change(queuesql::lockHead, {owner, basket});
    const Counts before = measure(owner, basket);
    operation();
    const Counts after = measure(owner, basket);
    correctHead(owner, basket);
    count({after.waiting - before.waiting, after.blocked - before.blocked});
}

QueueStore::Counts QueueStore::measure(const QString &owner, const QString &basket)
{
    Counts counts;
    m_connection.read(queuesql::measure, {owner, basket, owner, basket}, [&counts](const QSqlQuery &row) {
        counts.waiting = row.value(1).toLongLong();
        counts.blocked = row.value(0).toLongLong() - counts.waiting;
    });
    return counts;
}

void QueueStore::count(const Counts &change)
{
    const int row = m_database->summaryRow();
    if (m_connection.change(queuesql::count, {change.waiting, change.blocked, row}) == 0)
        throw databaseerror::make(m_connection.title(), u"ошибка базы данных"_s, u"no row %1 in summary"_s.arg(row));
}

// The order's first event is its head if it is waiting.
void QueueStore::correctHead(const QString &owner, const QString &basket)
{
    qint64 first = 0;
    bool waits = false;
    m_connection.read(queuesql::firstOfOrder, {owner, basket}, [&](const QSqlQuery &row) {
        first = row.value(0).toLongLong();
        waits = row.value(1).toString() == u"waiting";
    });
    const QVariant nextAttempt = m_connection.value(queuesql::nextAttempt, {first});
    m_connection.change(queuesql::removeHeads, {owner, basket, first});
    if (waits)
        m_connection.change(queuesql::addHead, {first, owner, nextAttempt.isValid() ? nextAttempt : QVariant(0)});
}
