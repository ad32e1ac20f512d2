// The store's operations for the people who look after the queue.
#include "queuesql.h"
#include "queuestore.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

QueueAdmin::State stateOf(const QString &name)
{
    if (name == u"sending")
        return QueueAdmin::State::Sending;
    if (name == u"aside")
        return QueueAdmin::State::SetAside;
    return name == u"discarded" ? QueueAdmin::State::Discarded : QueueAdmin::State::Waiting;
}

QDateTime timeOf(const QVariant &milliseconds)
{
    return milliseconds.toLongLong() > 0 ? QDateTime::fromMSecsSinceEpoch(milliseconds.toLongLong()) : QDateTime();
}

QString operationOf(const QByteArray &event)
{
    return QUrl(QJsonDocument::fromJson(event).object().value(u"url").toString()).path().section(u'/', -1);
}

void readRow(const QSqlQuery &row, const QueueStore::EntryReader &reader)
{
    const QByteArray event = row.value(11).toString().toUtf8();
    QueueAdmin::Entry entry;
    entry.id = row.value(0).toLongLong();
    entry.owner = row.value(1).toString();
    entry.order = row.value(2).toString();
    entry.operation = operationOf(event);
    entry.state = stateOf(row.value(3).toString());
    entry.attempts = row.value(4).toInt();
    entry.stored = timeOf(row.value(5));
    entry.nextAttempt = timeOf(row.value(6));
    entry.lastError = row.value(7).toString();
    entry.refused = timeOf(row.value(8));
    entry.discarded = timeOf(row.value(9));
    entry.discardReason = row.value(10).toString();
    reader(entry, event);
}

} // namespace

void QueueStore::readEntries(IdRange ids, const EntryReader &reader)
{
    m_connection.read(queuesql::entries, {ids.first, ids.last},
                      [&reader](const QSqlQuery &row) { readRow(row, reader); });
}

int QueueStore::retry(IdRange ids)
{
    return changeAlone(queuesql::retry, {ids.first, ids.last});
}

bool QueueStore::discard(qint64 id, const QString &reason, const QueueLease &lease, QueueTime now)
{
    DatabaseTransaction transaction(m_connection);
    releaseWhatNobodyIsSending(lease);
    const int rows = m_connection.change(queuesql::discard, {qint64{now.time_since_epoch().count()}, reason, id});
    transaction.commit();
    return rows > 0;
}
