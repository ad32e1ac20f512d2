// Queries about a customer and a card, and text messages to a customer.
#include "client/interface.h"

#include <log4qt/logger.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Percent-encodes the value, because most servers decode a "+" in a query as a space. An empty value keeps its "=".
void addValue(QUrlQuery &query, const QString &name, const QString &value)
{
    // A null value would be sent without its "=".
    query.addQueryItem(name, value.isEmpty() ? u""_s : QString::fromLatin1(QUrl::toPercentEncoding(value)));
}

} // namespace

QJsonObject Interface::searchCustomer(const QString &number, ECardNumberType type) const
{
    logger->debug(u"Получение информации о клиенте"_s);
    QUrlQuery parameters;
    addValue(parameters, u"Brand"_s, brand);
    addValue(parameters, type == ECardNumberType::Phone ? u"Phone"_s : u"CardNumber"_s, number);
    return query(u"searchCustomer"_s, parameters);
}

QJsonObject Interface::cardInfo(const QString &cardNumber, const QString &customerAccount) const
{
    logger->debug(u"Получение уровня программы лояльности"_s);
    return query(u"cardInfo"_s, cardQuery(cardNumber, customerAccount));
}

double Interface::loyaltyBonusInfo(const QString &cardNumber, const QString &customerAccount) const
{
    logger->debug(u"Получение баллов для списания"_s);
    return query(u"loyaltyBalanceInfo"_s, cardQuery(cardNumber, customerAccount)).value("AmountQty"_L1).toDouble();
}

void Interface::verification(const QString &text, const QString &phone) const
{
    logger->info(u"Верификация покупателя через СМС"_s);
    const QJsonObject message{{u"brand"_s, brand}, {u"phone"_s, phone}, {u"text"_s, text}, {u"channel"_s, u"sms"_s}};
    request({QNetworkAccessManager::PostOperation, getVerificationUrl(u"send"_s), headers, QJsonDocument(message)},
            false);
}

QUrlQuery Interface::cardQuery(const QString &cardNumber, const QString &customerAccount) const
{
    QUrlQuery parameters;
    addValue(parameters, u"Brand"_s, brand);
    addValue(parameters, u"CardNumber"_s, cardNumber);
    addValue(parameters, u"CustAccountNum"_s, customerAccount);
    return parameters;
}

QJsonObject Interface::query(const QString &method, const QUrlQuery &parameters) const
{
    const http::Response response =
        request({QNetworkAccessManager::GetOperation, getUrl(method, parameters), headers, QJsonDocument()}, false);
    return response.json().object().value("data"_L1).toObject();
}

} // namespace kvo
