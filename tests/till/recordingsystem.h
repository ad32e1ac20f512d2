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
        note(QString::number(event.getCode()));
        const auto document = event.value(QStringLiteral("document")).value<QSharedPointer<AbstractDocument>>();
        if (event.getCode() == 57 || event.getCode() == 24)
            m_pending = event.getCode() == 57;
        else if (event.getCode() == 239 || (event.getCode() == 237 && !std::exchange(m_pending, false)))
            reissue(document);
    }

    bool identifyByCard(QSharedPointer<DocumentCardRecord> &, ECardNumberType) override
    {
        lastError = tr::Tr(QStringLiteral("Карта не найдена"));
        return !failing;
    }

    bool request(const QSharedPointer<AbstractDocument> &document) override
    {
        note(QStringLiteral("request"));
        lastError = tr::Tr(QStringLiteral("Нет связи"));
        if (failing)
            return false;
        pointsForSpend = 10;
        if (getCard()->getOperationId().isEmpty())
            getCard()->setOperationId(QUuid::createUuid().toString());
        save(document);
        return true;
    }

    bool spendPoints() override
    {
        note(QStringLiteral("spend"));
        BasicLoyaltySystem::spendPoints();
        save(currentDocument());
        return true;
    }

    bool commit(const QSharedPointer<AbstractDocument> &) override
    {
        note(QStringLiteral("commit"));
        if (getCard())
            push(QStringLiteral("post"));
        return true;
    }

    bool rollback(const QSharedPointer<AbstractDocument> &) override
    {
        note(QStringLiteral("rollback"));
        if (getCard() && !getCard()->getOperationId().isEmpty())
            push(QStringLiteral("cancel"));
        if (getCard())
            getCard()->setOperationId({});
        return true;
    }

    /// What was asked since the last call, such as "57 24 commit".
    QString takeCalls() { return std::exchange(m_calls, {}).join(u' '); }

    bool failing = false; ///< Identification and pricing fail.

private:
    void reissue(const QSharedPointer<AbstractDocument> &document)
    {
        if (getCard())
            getCard()->setOperationId({});
        cancel();
        if (getCard())
            request(document);
    }

    void push(const QString &operation)
    {
        const QJsonObject payload{{QStringLiteral("basket"), getCard()->getOperationId()}};
        Singleton<DBQueueBroker>::instance()->push(
            QStringLiteral("kvo"), {{QStringLiteral("url"), operation}, {QStringLiteral("payload"), payload}}, {});
    }

    static void save(const QSharedPointer<AbstractDocument> &document)
    {
        MockFactory<SaveToFileLogic>::create()->save(document, {}, 0.0);
    }

    void note(const QString &call) { m_calls.append(call); }

    QStringList m_calls;
    bool m_pending = false;
};
