// A loyalty system that notes what the till asks of it, and behaves towards check and queue as a real one does.
#pragma once

#include <cashier/savetofilelogic.h>
#include <core/activitynotifier.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>
#include <queue/dbqueuebroker.h>

#include <QtCore/QJsonObject>
#include <QtCore/QUuid>

class RecordingSystem : public BaseActivityListener, public BasicLoyaltySystem
{
public:
    RecordingSystem()
    {
        loyaltySystemCode = 26;
        init();
        Singleton<ActivityNotifier>::instance()->subscribe(this, {57, 237, 24, 238, 239});
    }

    void handleEvent(const Event &event) override
    {
        m_calls.append(QString::number(event.getCode()));
        if (event.getCode() == 57 || event.getCode() == 24)
            m_pending = event.getCode() == 57;
        else if (event.getCode() == 239 || (event.getCode() == 237 && !std::exchange(m_pending, false)))
            reissue(event.value(QStringLiteral("document")).value<QSharedPointer<AbstractDocument>>());
    }

    bool request(const QSharedPointer<AbstractDocument> &document) override
    {
        m_calls.append(QStringLiteral("request"));
        pointsForSpend = 10;
        if (getCard()->getOperationId().isEmpty())
            getCard()->setOperationId(QUuid::createUuid().toString());
        save(document);
        return true;
    }

    bool spendPoints() override
    {
        m_calls.append(QStringLiteral("spend"));
        BasicLoyaltySystem::spendPoints();
        save(currentDocument());
        return true;
    }

    bool commit(const QSharedPointer<AbstractDocument> &) override { return end(QStringLiteral("commit")); }
    bool rollback(const QSharedPointer<AbstractDocument> &) override { return end(QStringLiteral("rollback")); }

    /// What was asked since the last call, such as "57 24 commit".
    std::string takeCalls() { return std::exchange(m_calls, {}).join(u' ').toStdString(); }

private:
    bool end(const QString &call)
    {
        m_calls.append(call);
        if (getCard() && !getCard()->getOperationId().isEmpty()) {
            const QJsonObject payload{{QStringLiteral("basket"), getCard()->getOperationId()}};
            Singleton<DBQueueBroker>::instance()->push(
                QStringLiteral("kvo"), {{QStringLiteral("url"), call}, {QStringLiteral("payload"), payload}}, {});
        }
        return true;
    }

    void reissue(const QSharedPointer<AbstractDocument> &document)
    {
        getCard()->setOperationId({});
        cancel();
        request(document);
    }

    static void save(const QSharedPointer<AbstractDocument> &document)
    {
        MockFactory<SaveToFileLogic>::create()->save(document, {}, 0.0);
    }

    QStringList m_calls;
    bool m_pending = false;
};
