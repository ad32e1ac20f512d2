// The filling side of the queue.
#include "dbqueuebroker.h"

#include "queuesignal.h"
#include "queuestore.h"

#include <core/jsontext.h>
#include <database/databaseerror.h>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

QString orderOf(const QJsonObject &event, const QString &key)
{
    const QString basket = event.value(u"payload").toObject().value(u"basket").toString();
    return basket.isEmpty() ? key : basket;
}

} // namespace

DBQueueBroker::DBQueueBroker() = default;
DBQueueBroker::~DBQueueBroker() = default;

void DBQueueBroker::push(const QString &owner, const QJsonObject &event, const QString &key)
{
    if (owner.isEmpty())
        throw databaseerror::make(u"Очередь запросов «%1»"_s.arg(QueueSettings::configured().name()),
                                  u"не указан получатель запроса"_s, u"push without owner"_s);
    const QByteArray json = jsontext::compact(QJsonDocument(event));
    m_mayFail = true; // until this has succeeded
    access().use([&](QueueStore &store) { store.push(owner, orderOf(event, key), json, currentQueueTime()); });
    m_mayFail = false;
    QueueSignal::instance().raise();
}

QueueStatus DBQueueBroker::status()
{
    return access().use([](QueueStore &store) { return store.status(); });
}

QString DBQueueBroker::problem()
{
    try {
        const bool commit = std::exchange(m_mayFail, true);
        access().use([commit](QueueStore &store) { store.requireWritable(commit); });
        m_mayFail = false;
        return {};
    } catch (const BasicException &error) {
        return error.text().ru();
    }
}

QueueAccess &DBQueueBroker::access()
{
    if (!m_access)
        m_access = std::make_unique<QueueAccess>(QueueSettings::configured(), DatabaseConnection::Commits::Synced);
    return *m_access;
}
