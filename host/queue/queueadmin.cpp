// The administration of the queue, on a connection of its own.
#include "queueadmin.h"

#include "eventmask.h"
#include "queuesignal.h"
#include "queuestore.h"

#include <core/basicexception.h>

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace {

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
    case QueueAdmin::State::SetAside:
        return u"отложена"_s;
    case QueueAdmin::State::Discarded:
        return u"уже снята с отправки"_s;
    }
    return {};
}

} // namespace

QueueAdmin::QueueAdmin()
    : m_store(std::make_unique<QueueStore>(QueueSettings::configured(), DatabaseConnection::Commits::Synced,
                                           DatabaseConnection::Missing::IsRefused)),
      m_lease(m_store->newLease())
{}

QueueAdmin::~QueueAdmin() = default;

QList<QueueAdmin::Entry> QueueAdmin::list() const
{
    QList<Entry> entries;
    m_store->readEntries({}, [&entries](const Entry &entry, const QByteArray &) { entries.append(entry); });
    return entries;
}

QueueAdmin::Entry QueueAdmin::entry(qint64 id) const
{
    std::optional<Entry> found;
    m_store->readEntries({id, id}, [&found](const Entry &entry, const QByteArray &) { found = entry; });
    if (!found)
        throw refusal(id, u"не найдена"_s);
    return *found;
}

QJsonObject QueueAdmin::event(qint64 id) const
{
    std::optional<QJsonObject> found;
    m_store->readEntries({id, id}, [&found](const Entry &, const QByteArray &event) {
        found = QJsonDocument::fromJson(event).object();
    });
    if (!found)
        throw refusal(id, u"не найдена"_s);
    return eventmask::masked(*found);
}

void QueueAdmin::retry(qint64 id)
{
    if (m_store->retry({id, id}) == 0)
        throw refusal(id, u"не отложена: "_s + describe(entry(id).state));
    QueueSignal::instance().raise();
}

int QueueAdmin::retryAll()
{
    const int count = m_store->retry({});
    QueueSignal::instance().raise();
    return count;
}

void QueueAdmin::discard(qint64 id, const QString &reason)
{
    if (reason.trimmed().isEmpty())
        throw refusal(id, u"не снята с отправки: укажите причину"_s);
    if (!m_store->discard(id, reason, *m_lease, currentQueueTime()))
        throw refusal(id, u"не снята с отправки: "_s + describe(entry(id).state));
    QueueSignal::instance().raise();
}
