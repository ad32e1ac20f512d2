// The order operations of the service client: immediate calls, and requests to be sent later.
#include "client/interface.h"

#include <log4qt/logger.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

Response Interface::calculateOrder(const QSharedPointer<AbstractDocument> &document,
                                   const QSharedPointer<DocumentCardRecord> &card) const
{
    logger->debug(u"Предварительный расчёт баллов"_s);
    return sendOrder(orderRequest(u"calculateOrder"_s, createOrderBody(document, card, false)), *card);
}

Response Interface::createOrder(const QSharedPointer<AbstractDocument> &document,
                                const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount) const
{
    logger->debug(u"Создание заказа"_s);
    return sendOrder(orderRequest(u"createOrder"_s, createOrderBody(document, card, forbidDiscount)), *card);
}

Request Interface::createOrderRequest(const QSharedPointer<AbstractDocument> &document,
                                      const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount) const
{
    return orderRequest(u"createOrder"_s, createOrderBody(document, card, forbidDiscount));
}

Request Interface::updateOrderRequest(const QSharedPointer<AbstractDocument> &document,
                                      const QSharedPointer<DocumentCardRecord> &card) const
{
    return orderRequest(u"updateOrder"_s, createOrderBody(document, card, false));
}

Request Interface::postOrderRequest(const QSharedPointer<DocumentCardRecord> &card) const
{
    return orderRequest(u"postOrder"_s, card->getOperationInfo().toJsonObject());
}

Request Interface::bindOrderIdRequest(const QSharedPointer<AbstractDocument> &document,
                                      const QSharedPointer<DocumentCardRecord> &card) const
{
    QJsonObject body = orderReference(*card);
    body.insert(u"orderID"_s, document->getIdentifier());
    return orderRequest(u"bindOrderId"_s, body);
}

Request Interface::cancelOrderRequest(const QSharedPointer<AbstractDocument> & /*document*/,
                                      const QSharedPointer<DocumentCardRecord> &card) const
{
    return orderRequest(u"cancelOrder"_s, orderReference(*card));
}

/// Identifies an existing order: customer, order and till.
QJsonObject Interface::orderReference(const DocumentCardRecord &card) const
{
    return {{u"brand"_s, brand},
            {u"cardNumber"_s, card.getNumber().toString()},
            {u"onlineStore"_s, onlineStore},
            {u"basket"_s, card.getOperationId()},
            {u"terminal"_s, terminal}};
}

Request Interface::orderRequest(const QString &method, const QJsonObject &body) const
{
    return {QNetworkAccessManager::PostOperation, getUrl(method, QUrlQuery()), headers, QJsonDocument(body)};
}

Response Interface::sendOrder(const Request &order, DocumentCardRecord &card) const
{
    Response response = requestResult(order);
    const QJsonObject body = order.payload.object();
    response.basket = body.value("basket"_L1).toString();
    card.setOperationInfo(body);
    return response;
}

} // namespace kvo
