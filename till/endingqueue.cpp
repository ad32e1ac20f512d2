// Keeps requests with the check while it ends, and while the queue cannot be used.
#include "endingqueue.h"

#include <core/basicexception.h>
#include <core/singleton.h>

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const QString ownerKey = u"owner"_s;
const QString eventKey = u"event"_s;
const QString orderKey = u"key"_s;

} // namespace

void EndingQueue::push(const QString &owner, const QJsonObject &event, const QString &key)
{
    const auto handOver = [&] {
        const QByteArray json = QJsonDocument(event).toJson(QJsonDocument::Compact);
        m_holder(QVariantMap{{ownerKey, owner}, {eventKey, QString::fromUtf8(json)}, {orderKey, key}});
    };
    if (m_holder && m_holding) {
        handOver();
        return;
    }
    try {
        pushNow(owner, event, key);
    } catch (const BasicException &) {
        if (!m_holder)
            throw;
        handOver();
    }
}

void EndingQueue::pushNow(const QString &owner, const QJsonObject &event, const QString &key)
{
    try {
        DBQueueBroker::push(owner, event, key);
        m_problem.clear();
    } catch (const BasicException &error) {
        m_problem = error.text().ru();
        throw;
    }
}

void EndingQueue::store(const QVariantList &requests)
{
    for (const QVariant &request : requests) {
        const QVariantMap entry = request.toMap();
        const QByteArray json = entry.value(eventKey).toString().toUtf8();
        pushNow(entry.value(ownerKey).toString(), QJsonDocument::fromJson(json).object(),
                entry.value(orderKey).toString());
    }
}

const QString &EndingQueue::findProblem()
{
    m_problem = problem();
    return m_problem;
}

std::optional<QueueStatus> EndingQueue::statusIfItWorks() const
{
    return m_problem.isEmpty() ? queueStatus() : std::nullopt;
}

std::optional<QueueStatus> queueStatus()
{
    try {
        return Singleton<DBQueueBroker>::instance()->status();
    } catch (const BasicException &) {
        return std::nullopt;
    }
}

} // namespace till
