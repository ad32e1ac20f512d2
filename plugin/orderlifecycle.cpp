// The order on the service from the first pricing to the closed or voided check.
#include "plugin/plugin.h"

#include <core/basicexception.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

#include <log4qt/logger.h>

#include <QtCore/QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

void enqueue(const Request &request)
{
    // A request stored without its address could never be delivered.
    if (!request.url.isValid() || request.url.host().isEmpty())
        throw BasicException(u"Неверно задан адрес сервиса лояльности, проверьте настройки Kvo:host и Kvo:path"_s);
    Singleton<DBQueueBroker>::instance()->push(u"kvo"_s, request.toQueueEvent(), QString());
}

} // namespace

bool Plugin::request(const QSharedPointer<AbstractDocument> &document)
{
    logger->info(u"Запрос к системе лояльности"_s);
    const auto card = getCard();
    orderCreated = false;
    if (card)
        storePluginData(); // A later save must not keep an order as created: this pricing may fail.
    if (!hasCheckAndCard(document, card))
        return true;
    const QString operationId = card->getOperationId();
    const QVariant operationInfo = card->getOperationInfo();
    std::optional<Response> response;
    try {
        response = interface->calculateOrder(document, card);
    } catch (const BasicException &error) {
        reportError(error.text());
        return false;
    }
    bonusImpacts.clear();
    try {
        card->setPointsForSpend(response->redeemPointsAmount());
        pointsForSpend = response->redeemPointsAmount();
        card->setOperationId(response->basket);
        createBonusRecords(card, *response);
        updatePluginData();
    } catch (...) {
        // Not priced: the next attempt must not take this order for one that the cashier has seen.
        card->setOperationInfo(operationInfo);
        card->setOperationId(operationId);
        storePluginData();
        throw;
    }
    return true;
}

/// Gives an identifier to an order that was never priced. Every attempt must use the same one, also after a restart,
/// because an order whose answer was lost may exist on the service. So it is saved before it is sent.
void Plugin::assignOperationId(DocumentCardRecord &card)
{
    if (!card.getOperationId().isEmpty())
        return;
    orderCreated = false;
    card.setOperationId(interface->createUuid());
    auto unnamed = qScopeGuard([&card] { card.setOperationId(QString()); });
    updatePluginData();
    unnamed.dismiss();
}

/// Creates the order, calling `confirm` before each attempt. Empty when the card was removed instead.
std::optional<Response> Plugin::createOrder(const QSharedPointer<AbstractDocument> &document,
                                            const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount,
                                            const std::function<void()> &confirm)
{
    const tr::Tr question(u"kvoCreateOrderError"_s,
                          u"Ошибка при создании заказа.\nПовторить или удалить карту из чека?"_s);
    std::optional<Response> response;
    retryOrRemoveCard(question, document, card, [&] {
        confirm();
        if (getCard() != card)
            return; // Taken off the check while the customer was asked for the code.
        assignOperationId(*card);
        response = interface->createOrder(document, card, forbidDiscount);
    });
    return response;
}

bool Plugin::commit(const QSharedPointer<AbstractDocument> &document)
{
    pendingUpdate = false; // It says nothing about the next check.
    if (document && document->getType() == EDocumentType::RefundBySale)
        return true;
    logger->info(u"Подтверждение операций бонусной системы"_s);
    const auto card = getCard();
    if (!hasCheckAndCard(document, card))
        return true;
    // Without an operation id, an order known to exist belongs to an earlier check.
    if (!orderCreated || card->getOperationId().isEmpty()) {
        if (!createOrder(document, card, true))
            return true;
        // Before the first push: a repeated commit must not replace an order that may already be posted.
        orderCreated = true;
        try {
            updatePluginData();
        } catch (...) {
            orderCreated = false;
            storePluginData();
            throw;
        }
    }
    enqueue(interface->postOrderRequest(card));
    enqueue(interface->bindOrderIdRequest(document, card));
    return true;
}

bool Plugin::rollback(const QSharedPointer<AbstractDocument> &document)
{
    cancelOrder(document, true);
    pendingUpdate = false;
    return true;
}

bool Plugin::cancelOrder(const QSharedPointer<AbstractDocument> &document, bool queued)
{
    const auto card = getCard();
    if (!card || card->getOperationId().isEmpty())
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
    pointsForSpend = 0;
    pointsForEarn = 0;
    bonusImpacts.clear();
    bonusRecords.clear();
    customer = QJsonObject();
    return true;
}

} // namespace kvo
