// The filling side of the queue. The connection is made at the first use, and again after a failure, so that a till
// can start, and goes on working, when the disk comes back.
#include "dbqueuebroker.h"

#include "queueerror.h"
#include "queuesignal.h"
#include "queuestore.h"

#include <QtCore/QJsonDocument>

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
        throw queueerror::make(QueueFile::configuredName(), u"не указан получатель запроса"_s, u"push without owner"_s);
    const QByteArray json = QJsonDocument(event).toJson(QJsonDocument::Compact);
    const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    withStore([&](QueueStore &store) { store.push(owner, orderOf(event, key), json, now); });
    QueueSignal::instance().raise();
}

DBQueueBroker::Status DBQueueBroker::status() const
{
    Status status;
    withStore([&](QueueStore &store) { status = store.status(); });
    return status;
}

void DBQueueBroker::withStore(const std::function<void(QueueStore &)> &operation) const
{
    if (m_store && m_store->isReplaced())
        m_store.reset();
    try {
        if (!m_store)
            m_store = std::make_unique<QueueStore>(QueueFile::configuredName(), QueueConnection::Commits::Synced);
        operation(*m_store);
    } catch (...) {
        m_store.reset();
        throw;
    }
}
