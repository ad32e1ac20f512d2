// Holds requests back while a check ends.
#include "endingqueue.h"

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace till {

void EndingQueue::push(const QString &owner, const QJsonObject &event, const QString &key)
{
    if (!m_holder) {
        DBQueueBroker::push(owner, event, key);
        return;
    }
    const QByteArray json = QJsonDocument(event).toJson(QJsonDocument::Compact);
    m_holder(QVariantMap{{u"owner"_s, owner}, {u"event"_s, QString::fromUtf8(json)}, {u"key"_s, key}});
}

void EndingQueue::store(const QVariantList &requests)
{
    for (const QVariant &request : requests) {
        const QVariantMap entry = request.toMap();
        const QByteArray json = entry.value(u"event"_s).toString().toUtf8();
        DBQueueBroker::push(entry.value(u"owner"_s).toString(), QJsonDocument::fromJson(json).object(),
                            entry.value(u"key"_s).toString());
    }
}

} // namespace till
