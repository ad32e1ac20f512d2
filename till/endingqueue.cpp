// Keeps requests with the check while it ends, and while the queue cannot be used.
#include "endingqueue.h"

#include <core/basicexception.h>

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace till {

void EndingQueue::push(const QString &owner, const QJsonObject &event, const QString &key)
{
    const auto handOver = [&] {
        const QByteArray json = QJsonDocument(event).toJson(QJsonDocument::Compact);
        m_holder(QVariantMap{{u"owner"_s, owner}, {u"event"_s, QString::fromUtf8(json)}, {u"key"_s, key}});
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
        const QByteArray json = entry.value(u"event"_s).toString().toUtf8();
        pushNow(entry.value(u"owner"_s).toString(), QJsonDocument::fromJson(json).object(),
                entry.value(u"key"_s).toString());
    }
}

const QString &EndingQueue::findProblem()
{
    m_problem = problem();
    return m_problem;
}

} // namespace till
