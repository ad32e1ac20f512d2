// Checks as they are sold every day: barcodes, prices with kopecks, some goods by weight, some on sale.
#include "samples.h"

#include <nlohmann/json.hpp>

#include <QtCore/QCoreApplication>

using namespace Qt::Literals::StringLiterals;

namespace bench {

QSharedPointer<GoodsItem> makeLine(int number)
{
    const auto item = QSharedPointer<GoodsItem>::create();
    item->setAdditionalBarcode(QString::number(4600000000000 + number));
    item->getTmc()->setCode(item->getAdditionalBarcode());
    item->getTmc()->setName(u"Товар номер %1"_s.arg(number));
    item->getTmc()->setPriceSourceType(number % 7 ? EPriceSourceType::Catalogue : EPriceSourceType::Promotion);
    item->setPrice(Money::fromKopecks(4990 + number % 977 * 101));
    item->setQuantity(number % 5 ? number % 3 + 1 : 0.345);
    item->setAllowBonusEarn(number % 11 != 0);
    if (number % 13 == 0)
        item->setCampaignLabels({u"NOBONUS"_s});
    return item;
}

QVariantHash settings(const QString &url)
{
    return {{u"Kvo:host"_s, url},
            {u"Kvo:brand"_s, u"KVO"_s},
            {u"Kvo:onlineStore"_s, u"SHOP-1"_s},
            {u"Kvo:terminal"_s, u"TILL-1"_s}};
}

QVariantHash settings(const AnswerServer &server)
{
    return settings(u"http://127.0.0.1:%1"_s.arg(server.port()));
}

QSharedPointer<SaleDocument> makePlainCheck(int lines)
{
    const auto check = QSharedPointer<SaleDocument>::create();
    for (int number = 1; number <= lines; ++number)
        check->addGoodsItem(makeLine(number));
    return check;
}

QSharedPointer<SaleDocument> makeCheck(int lines)
{
    constexpr int step = 10;
    const auto check = makePlainCheck(lines);
    for (int number = step; number <= lines; number += step) {
        const auto totals = QSharedPointer<DocumentImpactDetail>::create();
        totals->setDiscountType(EDiscountType::Bonus);
        totals->setDiscountObject(EDiscountObject::Position);
        totals->setMinPriceIgnored(true);
        totals->setPosition(number);
        totals->setDiscountSum(7.35);
        check->addImpact(QSharedPointer<BonusImpact>::create(totals));
    }
    return check;
}

QSharedPointer<DocumentCardRecord> makeCard()
{
    constexpr int kvoSystemCode = 26;
    const auto card = QSharedPointer<DocumentCardRecord>::create();
    card->setNumber(u"7770000000001"_s);
    card->setLoyaltySystemCode(kvoSystemCode);
    return card;
}

AnswerServer::Answers answers(int lines)
{
    using Json = nlohmann::json;
    Json redeemed = Json::array();
    for (int line = 1; line <= lines; ++line)
        redeemed.push_back({{"lineId", line}, {"points", 12.25}});
    const auto data = [](const Json &value) { return Json{{"success", true}, {"data", value}}.dump(); };
    const auto result = [](const Json &value) { return Json{{"success", true}, {"result", value}}.dump(); };
    const std::string order =
        result({{"basket", "2f1c8a0e-6a53-4a83-9f0e-6a1d52a5a0b1"}, {"earnPoints", 81.35}, {"redeemPoints", redeemed}});
    return {{"searchCustomer", data({{"CustAccount", "C-0001"},
                                     {"LastName", "Иванова"},
                                     {"FirstName", "Мария"},
                                     {"MiddleName", "Петровна"},
                                     {"BirthDate", "1990-05-17 00:00:00"},
                                     {"Gender", 2},
                                     {"Email", "m@example.org"},
                                     {"Phone", "+79001234567"},
                                     {"CardNumber", "7770000000001"}})},
            {"cardInfo", data({{"Tiers", {{{"Name", "Серебро"}, {"Discount", 5}}}}})},
            {"loyaltyBalanceInfo", data({{"AmountQty", 1500.0}})},
            {"calculateOrder", order},
            {"createOrder", order},
            {"updateOrder", order},
            {"postOrder", result(Json::object())},
            {"bindOrderId", result(Json::object())}};
}

OrderTexts textsOf(const QJsonObject &body)
{
    const auto text = [](const QJsonObject &object, QLatin1StringView key) { return object.value(key).toString(); };
    OrderTexts order{text(body, "brand"_L1),          text(body, "cardNumber"_L1),
                     text(body, "onlineStore"_L1),    text(body, "basket"_L1),
                     text(body, "basketDatetime"_L1), text(body, "paymentDiscAmount"_L1),
                     text(body, "terminal"_L1),       {}};
    const QJsonArray lines = body.value("orderLines"_L1).toArray();
    for (const auto &entry : lines) {
        const QJsonObject line = entry.toObject();
        order.lines.append({text(line, "barcode"_L1), text(line, "lineID"_L1), text(line, "qty"_L1),
                            text(line, "lineAmount"_L1), text(line, "paymentDiscAmount"_L1),
                            line.value("isSale"_L1).toBool(), line.value("noDiscountAllowed"_L1).toBool(),
                            line.value("noEarnAllowed"_L1).toBool()});
    }
    return order;
}

QJsonObject buildByHand(const OrderTexts &order)
{
    QJsonArray lines;
    for (const OrderTexts::Line &line : order.lines)
        lines.append(QJsonObject{{u"barcode"_s, line.barcode},
                                 {u"isSale"_s, line.isSale},
                                 {u"lineAmount"_s, line.amount},
                                 {u"lineID"_s, line.lineId},
                                 {u"noDiscountAllowed"_s, line.noDiscount},
                                 {u"noEarnAllowed"_s, line.noEarn},
                                 {u"paymentDiscAmount"_s, line.payment},
                                 {u"qty"_s, line.quantity}});
    return {{u"basket"_s, order.basket},
            {u"basketDatetime"_s, order.date},
            {u"brand"_s, order.brand},
            {u"cardNumber"_s, order.cardNumber},
            {u"onlineStore"_s, order.onlineStore},
            {u"orderLines"_s, lines},
            {u"paymentDiscAmount"_s, order.payment},
            {u"terminal"_s, order.terminal}};
}

Side bareCurl(const QList<Exchange> &exchanges)
{
    return calls(1, [exchanges, curl = std::make_shared<BareCurl>(exchanges.first())] {
        for (const Exchange &exchange : exchanges)
            benchmark::DoNotOptimize(curl->send(exchange));
    });
}

QString diskFolder()
{
    return QCoreApplication::applicationDirPath() + u"/bench-XXXXXX"_s;
}

} // namespace bench
