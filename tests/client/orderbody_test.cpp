// Orders: how goods, discounts and payments are told to the service, and what its answers say.
#include "client/interface.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/commalocale.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"

#include <core/basicexception.h>

namespace kvo {

struct OrderBody : testing::Test
{
    QJsonObject line(bool forbidDiscount = false, int index = 0) const
    {
        return client.createOrderBody(check, card, forbidDiscount).value("orderLines"_L1)[index].toObject();
    }

    void addImpact(const QList<QPair<int, double>> &shares, EDiscountType type,
                   EDiscountMode mode = EDiscountMode::LoyaltySystem, const QVariant &valutCode = {})
    {
        const auto impact = builder::shares(shares);
        impact->getTotals()->setDiscountType(type);
        impact->getTotals()->setDiscountMode(mode);
        impact->getTotals()->setValutCode(valutCode);
        check->addImpact(impact);
    }

    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s}, {u"Kvo:onlineStore"_s, u"S"_s}, {u"Kvo:terminal"_s, u"T"_s}}};
    Interface client;
    QSharedPointer<SaleDocument> check = builder::check({10000, 5000});
    QSharedPointer<DocumentCardRecord> card = builder::card(u"2000"_s);
};

TEST_F(OrderBody, TellsThePlainCheck)
{
    card->setOperationId(u"basket-1"_s);
    const auto item = builder::line(3333, 3, 100);
    item->setAdditionalBarcode(u"460"_s);
    item->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    check->addGoodsItem(item);
    check->removeGoodsItem(1);
    check->removeGoodsItem(2);

    QJsonObject expected = json(R"({
        "brand": "B", "cardNumber": "2000", "onlineStore": "S", "basket": "basket-1",
        "orderLines": [{"barcode": "460", "lineID": "3", "qty": "1", "lineAmount": "99.99", "isSale": true,
                        "noDiscountAllowed": false, "noEarnAllowed": false, "paymentDiscAmount": "0.00"}],
        "paymentDiscAmount": "0.00", "terminal": "T"})");
    expected.insert("basketDatetime"_L1, check->getDateTime().date().toString(Qt::ISODate));
    const CommaLocale commas;
    EXPECT_EQ(client.createOrderBody(check, card, false), expected);
}

TEST_F(OrderBody, NamesLinesByPosition)
{
    for (const int position : {0, 1, 32, 33, 10'000, -1}) {
        check->getGoodsItems().first()->setPosnum(position);
        EXPECT_EQ(line().value("lineID"_L1).toString(), QString::number(position));
        EXPECT_EQ(line().value("qty"_L1), u"1"_s);
    }
}

TEST_F(OrderBody, FoldsImpactsByKind)
{
    addImpact({{1, 10}, {2, 1}}, EDiscountType::Bonus);
    addImpact({{1, 5}}, EDiscountType::Sum, EDiscountMode::Payment);
    addImpact({{1, 0.25}}, EDiscountType::Bonus, EDiscountMode::Manual, u"643"_s);
    addImpact({{1, 7}}, EDiscountType::Percent, EDiscountMode::Manual);
    addImpact({{2, 2}}, EDiscountType::None, EDiscountMode::Payment);
    EXPECT_EQ(client.createOrderBody(check, card, false).value("paymentDiscAmount"_L1), u"7.25"_s);
    EXPECT_EQ(line().value("lineAmount"_L1), u"93.00"_s);
    EXPECT_EQ(line().value("isSale"_L1), false);
    EXPECT_EQ(line().value("paymentDiscAmount"_L1), u"5.25"_s);
    EXPECT_EQ(line(false, 1).value("lineAmount"_L1), u"50.00"_s);
    EXPECT_EQ(line(false, 1).value("paymentDiscAmount"_L1), u"2.00"_s);
}

TEST_F(OrderBody, SaysWhatMayNotBeSpentAndEarned)
{
    // Labels, whether the line allows discounts and earning, whether the order forbids spending; then what is told.
    const std::tuple<QVariantList, bool, bool, bool, bool, bool> cases[] = {
        {{}, true, true, false, false, false},
        {{u"NOSPEND"_s}, true, true, false, true, false},
        {{u"NOBONUS"_s}, true, true, false, false, true},
        {{7, u"NOSPEND"_s, u"NOBONUS"_s}, true, true, false, true, true},
        {{u"nospend"_s, u"NOBONUS "_s}, true, true, false, false, false},
        {{}, false, true, false, true, false},
        {{}, true, false, false, false, true},
        {{}, true, true, true, true, false},
    };
    for (const auto &[labels, allowDiscount, allowEarn, forbid, noDiscount, noEarn] : cases) {
        const auto item = check->getGoodsItems().first();
        item->setCampaignLabels(labels);
        item->setAllowDiscount(allowDiscount);
        item->setAllowBonusEarn(allowEarn);
        SCOPED_TRACE(testing::PrintToString(std::tuple(labels.size(), allowDiscount, allowEarn, forbid)));
        EXPECT_EQ(line(forbid).value("noDiscountAllowed"_L1), noDiscount);
        EXPECT_EQ(line(forbid).value("noEarnAllowed"_L1), noEarn);
    }
}

TEST_F(OrderBody, IsKeptOnTheCardOnceTheServiceHasAcceptedIt)
{
    RestExchange exchange;
    const std::tuple<std::function<Response()>, QString, bool> cases[] = {
        {[this] { return client.calculateOrder(check, card); }, u"calculateOrder"_s, false},
        {[this] { return client.createOrder(check, card, false); }, u"createOrder"_s, false},
        {[this] { return client.createOrder(check, card, true); }, u"createOrder"_s, true},
    };
    for (const auto &[send, method, forbidsSpending] : cases) {
        exchange.answer = exchange.ok(R"({"success": true, "result": {"earnPoints": 3,
            "redeemPoints": [{"lineId": 1, "points": 10}, {"points": 2.5}, {}, 7, {"points": "8"}]}})");
        const Response response = send();
        const QJsonObject body = exchange.bodies.last();
        EXPECT_EQ(exchange.calls.last(), method);
        EXPECT_EQ(body.value("orderLines"_L1)[0]["noDiscountAllowed"_L1].toBool(), forbidsSpending);
        EXPECT_EQ(card->getOperationInfo().toJsonObject(), body);
        EXPECT_EQ(response.basket, body.value("basket"_L1).toString());
        EXPECT_EQ(response.basket.size(), 36);
        EXPECT_TRUE(card->getOperationId().isEmpty());
        EXPECT_EQ(response.earnPoints(), 3);
        EXPECT_EQ(response.redeemPointsAmount(), 12.5);
        exchange.answer = exchange.ok(R"({"success": true})");
        EXPECT_EQ(send().redeemPointsAmount(), 0);
        exchange.failures = {method};
        const QVariant accepted = card->getOperationInfo();
        EXPECT_THROW(send(), BasicException);
        EXPECT_EQ(card->getOperationInfo(), accepted);
    }
}

TEST_F(OrderBody, GoesIntoRequestsThatNameTheOrder)
{
    card->setOperationId(u"1"_s);
    card->setOperationInfo(QVariantMap{{u"basket"_s, u"as accepted"_s}});
    const QJsonObject order =
        json(R"({"brand": "B", "cardNumber": "2000", "onlineStore": "S", "basket": "1", "terminal": "T"})");
    QJsonObject binding = order;
    binding.insert("orderID"_L1, check->getIdentifier());
    const std::tuple<Request, QString, QJsonObject> cases[] = {
        {client.createOrderRequest(check, card, true), u"createOrder"_s, client.createOrderBody(check, card, true)},
        {client.updateOrderRequest(check, card), u"updateOrder"_s, client.createOrderBody(check, card, false)},
        {client.postOrderRequest(card), u"postOrder"_s, {{u"basket"_s, u"as accepted"_s}}},
        {client.bindOrderIdRequest(check, card), u"bindOrderId"_s, binding},
        {client.cancelOrderRequest(check, card), u"cancelOrder"_s, order},
    };
    for (const auto &[request, method, body] : cases) {
        EXPECT_EQ(request.op, QNetworkAccessManager::PostOperation);
        EXPECT_EQ(request.url, QUrl(u"http://localhost/api/ax/xpp/v1/"_s + method));
        EXPECT_EQ(request.headers.size(), 2);
        EXPECT_EQ(request.payload.object(), body) << method.toStdString();
    }
}

} // namespace kvo
