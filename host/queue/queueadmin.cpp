// The administration of the queue, on a connection of its own.
#include "queueadmin.h"

#include "eventmask.h"
#include "queuesignal.h"
#include "queuesql.h"
#include "queuestore.h"

#include <core/basicexception.h>

#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 lastId = std::numeric_limits<qint64>::max();

BasicException refusal(qint64 id, const QString &problem)
{
    return BasicException(u"Очередь запросов: запись %1 %2"_s.arg(QString::number(id), problem));
}

QString describe(QueueAdmin::State state)
{
    switch (state) {
    case QueueAdmin::State::Waiting:
        return u"ожидает отправки"_s;
    case QueueAdmin::State::Sending:
        return u"сейчас отправляется"_s;
    case QueueAdmin::State::DeadLetter:
        return u"отклонена"_s;
    case QueueAdmin::State::Discarded:
        return u"снята с отправки"_s;
    }
    return {};
}

QueueAdmin::State stateOf(const QString &name)
{
    if (name == u"sending")
        return QueueAdmin::State::Sending;
    if (name == u"dead")
        return QueueAdmin::State::DeadLetter;
    return name == u"discarded" ? QueueAdmin::State::Discarded : QueueAdmin::State::Waiting;
}

QJsonObject eventIn(const QVariant &text)
{
    return eventmask::masked(QJsonDocument::fromJson(text.toString().toUtf8()).object());
}

QString checkOf(const QJsonObject &event)
{
    return event.value(u"payload")[u"orderID"].toVariant().toString();
}

QueueAdmin::Entry entryOf(const QSqlQuery &row)
{
    const QJsonObject event = eventIn(row.value(11));
    QueueAdmin::Entry entry;
    entry.id = row.value(0).toLongLong();
    entry.owner = row.value(1).toString();
    entry.order = row.value(2).toString();
    if (entry.order.startsWith(loneOrder))
        entry.order.clear();
    entry.operation = QUrl(event.value(u"url").toString()).path().section(u'/', -1);
    entry.card = event.value(u"payload")[u"cardNumber"].toString();
    entry.check = checkOf(event);
    entry.state = stateOf(row.value(3).toString());
    entry.attempts = row.value(4).toInt();
    entry.stored = dateTimeOf(row.value(5));
    if (row.value(6).toLongLong() > 1) // see queuesql::endBackOffs
        entry.nextAttempt = dateTimeOf(row.value(6));
    entry.lastError = row.value(7).toString();
    entry.refused = dateTimeOf(row.value(8));
    entry.discarded = dateTimeOf(row.value(9));
    entry.discardReason = row.value(10).toString();
    return entry;
}

bool matches(const QueueAdmin::Entry &entry, const QueueAdmin::Filter &filter)
{
    return entry.state == filter.state.value_or(entry.state) &&
           (filter.order.isEmpty() || entry.order == filter.order) &&
           (filter.check.isEmpty() || entry.check == filter.check);
}

} // namespace

QueueAdmin::QueueAdmin()
    : m_store(std::make_unique<QueueStore>(QueueSettings::configured(), DatabaseConnection::Commits::Synced,
                                           DatabaseConnection::IfMissing::Fail)),
      m_lease(m_store->newLease())
{}

QueueAdmin::~QueueAdmin() = default;

// Only one event of an order names the check; it belongs to all of them.
QList<QueueAdmin::Entry> QueueAdmin::list(const Filter &filter) const
{
    QList<Entry> entries;
    QHash<std::pair<QString, QString>, QString> checks; // by owner and order
    m_store->connection().read(queuesql::entries, {0, lastId, 0, lastId}, [&](const QSqlQuery &row) {
        entries.append(entryOf(row));
        if (const Entry &entry = entries.constLast(); !entry.order.isEmpty() && !entry.check.isEmpty())
            checks.insert({entry.owner, entry.order}, entry.check);
    });
    for (Entry &entry : entries)
        if (entry.check.isEmpty())
            entry.check = checks.value({entry.owner, entry.order});
    entries.removeIf([&filter](const Entry &entry) { return !matches(entry, filter); });
    entries.resize(std::min(entries.size(), filter.limit));
    return entries;
}

QueueStatus QueueAdmin::status() const
{
    return m_store->status();
}

QueueAdmin::Entry QueueAdmin::entry(qint64 id) const
{
    Entry found = stored(id);
    const auto takeCheck = [&found](const QSqlQuery &row) {
        if (const QString check = checkOf(eventIn(row.value(1))); !check.isEmpty())
            found.check = check;
    };
    if (found.check.isEmpty())
        m_store->connection().read(queuesql::eventsOfOrder, {found.owner, found.order, found.owner, found.order},
                                   takeCheck);
    return found;
}

QueueAdmin::Entry QueueAdmin::stored(qint64 id) const
{
    std::optional<Entry> found;
    m_store->connection().read(queuesql::entries, {id, id, id, id}, [&found](const QSqlQuery &row) {
        found = entryOf(row);
        found->event = eventIn(row.value(11));
    });
    if (!found)
        throw refusal(id, u"не найдена"_s);
    return *found;
}

void QueueAdmin::retry(qint64 id)
{
    change(id, [this, id](const Order &order) {
        const State state = stored(id).state;
        requireState(id, state == State::DeadLetter || state == State::Waiting, u"не отправлена"_s);
        revive(id);
        sendNow(id, order);
    });
}

// A dead letter behind another one becomes a waiting event, and goes on waiting.
int QueueAdmin::retryAll()
{
    QList<qint64> ids;
    m_store->connection().read(queuesql::deadLetters, {},
                               [&ids](const QSqlQuery &row) { ids.append(row.value(0).toLongLong()); });
    int count = 0;
    for (const qint64 id : std::as_const(ids))
        changeIfStored(id, [&](const Order &) { count += revive(id) ? 1 : 0; });
    return count;
}

bool QueueAdmin::revive(qint64 id)
{
    return m_store->connection().change(queuesql::revive, {id}) > 0;
}

void QueueAdmin::sendNow(qint64 id, const Order &order)
{
    const qint64 first = m_store->connection().value(queuesql::firstOfOrder, {order.owner, order.basket}).toLongLong();
    if (first != id)
        throw refusal(id, u"ждёт своей очереди: раньше неё запись %1 (%2)"_s.arg(QString::number(first),
                                                                                 describe(stored(first).state)));
    m_store->connection().change(queuesql::removeHead, {id});
    m_store->connection().change(queuesql::addHead, {id, order.owner, -1});
}

void QueueAdmin::discard(qint64 id, const QString &reason)
{
    const QString problem = u"не снята с отправки"_s;
    if (reason.trimmed().isEmpty())
        throw refusal(id, problem + u": укажите причину"_s);
    change(id, [&](const Order &) {
        const State state = stored(id).state;
        requireState(id, state == State::DeadLetter || state == State::Waiting, problem);
        DatabaseConnection &connection = m_store->connection();
        connection.change(queuesql::discardCopy,
                          {storedTime(currentQueueTime()), eventmask::maskText(reason.trimmed()), id});
        connection.change(queuesql::removeHead, {id});
        connection.change(queuesql::discardEvent, {id});
    });
}

void QueueAdmin::restore(qint64 id)
{
    change(id, [&](const Order &order) {
        DatabaseConnection &connection = m_store->connection();
        requireState(id, stored(id).state == State::Discarded, u"не возвращена"_s);
        if (connection.value(queuesql::isOrderBeingSent, {order.owner, order.basket}).toBool())
            throw refusal(id, u"не возвращена: запись того же заказа сейчас отправляется, повторите позже"_s);
        connection.change(queuesql::restoreCopy, {id});
        connection.change(queuesql::restoreDelete, {id});
    });
}

void QueueAdmin::change(qint64 id, const std::function<void(const Order &)> &operation)
{
    if (!changeIfStored(id, operation))
        throw refusal(id, u"не найдена"_s);
}

bool QueueAdmin::changeIfStored(qint64 id, const std::function<void(const Order &)> &operation)
{
    bool isStored = false;
    m_store->record([&] {
        m_store->releaseWhatNobodyIsSending(*m_lease);
        Order order;
        m_store->connection().read(queuesql::order, {id, id}, [&order](const QSqlQuery &row) {
            order = {row.value(0).toString(), row.value(1).toString()};
        });
        isStored = !order.owner.isEmpty();
        if (isStored)
            m_store->changeOrder(order.owner, order.basket, [&] { operation(order); });
    });
    QueueSignal::instance().raise();
    return isStored;
}

void QueueAdmin::requireState(qint64 id, bool allowed, const QString &problem) const
{
    if (!allowed)
        throw refusal(id, u"%1: %2"_s.arg(problem, describe(stored(id).state)));
}
