// The order on the service from the first pricing to the closed or voided check.
#include "plugin/plugin.h"

#include <core/basicexception.h>
#include <core/serder.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

#include <log4qt/logger.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

void enqueue(const Request &request)
{
    Singleton<DBQueueBroker>::instance()->push(u"kvo"_s, request.toQueueEvent(), QString());
}

QList<DocumentBonusRecord> bonusRecordsFrom(const QVariantList &list)
{
    QList<DocumentBonusRecord> records;
    for (const auto &entry : list) {
        DocumentBonusRecord record;
        serder::mapToGadget(DocumentBonusRecord::staticMetaObject, &record, entry.toMap());
        records.append(record);
    }
    return records;
}

} // namespace

bool Plugin::request(const QSharedPointer<AbstractDocument> &document)
{
    logger->info(u"Запрос к системе лояльности"_s);
    const auto card = getCard();
    orderCreated = false;
    if (!hasSubject(document, card))
        return true;
    std::optional<Response> response;
    try {
        response = interface->calculateOrder(document, card);
    } catch (const BasicException &error) {
        reportError(error.text());
        return false;
    }
    bonusImpacts.clear();
    pointsForSpend = response->redeemPointsAmount();
    card->setPointsForSpend(pointsForSpend);
    card->setOperationId(response->basket);
    createBonusRecords(card, *response);
    updatePluginData();
    return true;
}

/// Creates the order, with `confirm` before each attempt. Nothing: the cashier has removed the card instead.
std::optional<Response> Plugin::createOrder(const QSharedPointer<AbstractDocument> &document,
                                            const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount,
                                            const std::function<void()> &confirm)
{
    // All attempts must name the same order: one whose answer was lost may exist on the service.
    if (card->getOperationId().isEmpty())
        card->setOperationId(interface->createUuid());
    const tr::Tr question(u"kvoCreateOrderError"_s,
                          u"Ошибка при создании заказа.\nПовторить или удалить карту из чека?"_s);
    std::optional<Response> response;
    retryOrRemoveCard(question, document, card, [&] {
        confirm();
        response = interface->createOrder(document, card, forbidDiscount);
    });
    return response;
}

bool Plugin::commit(const QSharedPointer<AbstractDocument> &document)
{
    if (document && document->getType() == EDocumentType::RefundBySale)
        return true;
    logger->info(u"Подтверждение операций бонусной системы"_s);
    const auto card = getCard();
    if (!hasSubject(document, card))
        return true;
    if (!orderCreated && !createOrder(document, card, true))
        return true;
    enqueue(interface->postOrderRequest(card));
    enqueue(interface->bindOrderIdRequest(document, card));
    forgetOrder();
    return true;
}

bool Plugin::rollback(const QSharedPointer<AbstractDocument> &document)
{
    cancelOrder(document, true);
    forgetOrder();
    return true;
}

/// The check is over: the next one must not inherit what is known of its order.
void Plugin::forgetOrder()
{
    orderCreated = false;
    pendingUpdate = false;
}

bool Plugin::cancelOrder(const QSharedPointer<AbstractDocument> &document, bool queued)
{
    const auto card = getCard();
    if (!card || card->getOperationId().isEmpty() || !hasSubject(document, card))
        return true;
    const Request cancellation = interface->cancelOrderRequest(document, card);
    if (queued) {
        logger->info(u"Отправка сообщения отмены заказа в очередь"_s);
        enqueue(cancellation);
    } else {
        logger->info(u"Отмена заказа"_s);
        interface->requestOnline(cancellation);
    }
    card->setOperationInfo(QVariant());
    card->setOperationId(QString());
    return true;
}

bool Plugin::cancel()
{
    customer = QJsonObject();
    return BasicLoyaltySystem::cancel();
}

bool Plugin::restoreLoyaltySystem()
{
    pointsForSpend = getPluginData(u"pointsForSpend"_s, 0.0).toDouble();
    pointsForEarn = getPluginData(u"pointsForEarn"_s, 0.0).toDouble();
    bonusRecords = bonusRecordsFrom(getPluginData(u"bonusRecords"_s, QVariant()).toList());
    bonusImpacts = getPluginData(u"bonusImpacts"_s, QVariant()).value<BonusImpactPtrList>();
    // On the disk an impact keeps the number of its card, not the card.
    for (const auto &impact : std::as_const(bonusImpacts))
        impact->setCardRecord(getCard());
    orderCreated = getPluginData(u"orderCreated"_s, QVariant()).toBool();
    return true;
}

} // namespace kvo
