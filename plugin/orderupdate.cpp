// Keeps the order in step with the check while it changes.
#include "plugin/plugin.h"

#include <log4qt/logger.h>

#include <QtCore/QScopeGuard>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

void Plugin::updateOrder(const Event &event)
{
    const auto document = documentOf(event);
    const auto card = getCard();
    if (!card || card->getOperationId().isEmpty() || !hasCheckAndCard(document, card))
        return;
    const Request update = interface->updateOrderRequest(document, card);
    const tr::Tr question(u"kvoUpdateOrderError"_s,
                          u"Ошибка при обновлении заказа.\nПовторить или удалить карту из чека?"_s);
    retryOrRemoveCard(question, document, card, [&] { sendUpdate(update, document, card); });
}

/// Does nothing if the service has already accepted exactly this order. An order that does not exist yet is created
/// first, as it was priced; a retry after a failed update does not create it again.
void Plugin::sendUpdate(const Request &update, const QSharedPointer<AbstractDocument> &document,
                        const QSharedPointer<DocumentCardRecord> &card)
{
    const QVariant info = card->getOperationInfo();
    const QJsonObject accepted = info.toJsonObject();
    const QJsonObject body = update.payload.object();
    if (body == accepted)
        return;
    if (!orderCreated) {
        logger->info(u"Создание заказа"_s);
        Request creation = interface->createOrderRequest(document, card, true);
        if (!accepted.isEmpty()) // Otherwise an unfinished commit() or spendPoints() has named an order that was never
                                 // priced.
            creation.payload = QJsonDocument(accepted);
        interface->requestOnline(creation);
        orderCreated = true;
    }
    logger->info(u"Обновление заказа"_s);
    createBonusRecords(card, interface->requestOnline(update));
    // Until that is saved, a retry has to send the update again.
    auto unsaved = qScopeGuard([&] { card->setOperationInfo(info); });
    card->setOperationInfo(body);
    updatePluginData();
    unsaved.dismiss();
    pendingUpdate = false;
}

} // namespace kvo
