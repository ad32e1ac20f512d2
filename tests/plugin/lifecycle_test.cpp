// The order from pricing to the closed or voided check.
#include "pluginfixture.h"

namespace kvo {

using Lifecycle = PluginTest;

TEST_F(Lifecycle, PricingStoresPointsAndOrderUnlessItFails)
{
    plugin.bonusImpacts = plugin.createBonusImpacts(card, response(R"({"redeemPoints": [{"points": 1}]})"));
    plugin.orderCreated = true;
    EXPECT_CALL(*client, calculateOrder(DocumentPtr(document), card))
        .WillOnce(Return(response(R"({"earnPoints": 3, "redeemPoints": [{"lineId": 1, "points": 12.5}]})", u"b-2"_s)));
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    EXPECT_TRUE(plugin.request(document));
    EXPECT_TRUE(plugin.bonusImpacts.isEmpty());
    EXPECT_EQ(plugin.pointsForSpend, 12.5);
    EXPECT_EQ(card->getPointsForSpend(), 12.5);
    EXPECT_EQ(card->getOperationId(), u"b-2");
    EXPECT_EQ(plugin.getPluginData(u"pointsForEarn"_s, {}), QVariant(3.0));
    EXPECT_FALSE(plugin.orderCreated);

    plugin.orderCreated = true;
    EXPECT_CALL(*client, calculateOrder).WillOnce(Throw(refusal));
    EXPECT_FALSE(plugin.request(document));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_EQ(plugin.pointsForSpend, 12.5) << "a failure leaves the points";
    EXPECT_EQ(card->getOperationId(), u"b-2");
    EXPECT_FALSE(plugin.orderCreated);
}

TEST_F(Lifecycle, ClosingCreatesOneOrderWithoutSpending)
{
    card->setOperationId(QString());
    QStringList baskets;
    EXPECT_CALL(*client, createOrder(DocumentPtr(document), card, true))
        .Times(3)
        .WillRepeatedly([&](const auto &, const CardPtr &record, bool) {
            baskets.append(record->getOperationId());
            if (baskets.size() < 3)
                throw BasicException(refusal);
            return response("{}", record->getOperationId());
        });
    expectRetries(createError, 2);
    EXPECT_TRUE(plugin.commit(document));
    EXPECT_EQ(baskets, QStringList(3, baskets[0]));
    EXPECT_EQ(baskets[0].size(), 36);
    EXPECT_EQ(queued, (QStringList{u"postOrder"_s, u"bindOrderId"_s}));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
}

TEST_F(Lifecycle, TheNextCheckInheritsNoOrder)
{
    for (const auto end : {&Plugin::commit, &Plugin::rollback}) {
        plugin.orderCreated = true;
        raise(57);
        EXPECT_TRUE((plugin.*end)(document));
        EXPECT_FALSE(plugin.orderCreated || plugin.pendingUpdate);
    }
}

TEST_F(Lifecycle, RefundsBySaleAreLeftAlone)
{
    EXPECT_CALL(*client, createOrder).Times(0);
    EXPECT_TRUE(plugin.commit(QSharedPointer<SaleDocument>::create(EDocumentType::RefundBySale)));
    EXPECT_TRUE(queued.isEmpty());
}

TEST_F(Lifecycle, AFullQueueIsTheHostsBusiness)
{
    plugin.orderCreated = true;
    EXPECT_CALL(*queue, push).WillRepeatedly(Throw(refusal));
    EXPECT_THROW(plugin.commit(document), BasicException);
    EXPECT_THROW(plugin.rollback(document), BasicException);
    EXPECT_EQ(card->getOperationId(), u"basket-1");
}

TEST_F(Lifecycle, VoidingQueuesTheCancellationOnceAndForgetsTheCustomer)
{
    plugin.customer = json(R"({"a": 1})");
    card->setOperationInfo(QVariantMap{{u"a"_s, 1}});
    EXPECT_TRUE(plugin.rollback(document) && plugin.rollback(document) && plugin.cancel());
    EXPECT_EQ(queued, QStringList{u"cancelOrder"_s});
    EXPECT_TRUE(card->getOperationId().isEmpty() && card->getOperationInfo().isNull() && plugin.customer.isEmpty());
}

TEST_F(Lifecycle, WithoutCardOrderOrCheckNothingIsSent)
{
    EXPECT_CALL(*client, calculateOrder).Times(0);
    EXPECT_CALL(*client, createOrder).Times(0);
    EXPECT_CALL(*client, requestOnline).Times(0);
    const auto callEverything = [this](const DocumentPtr &check) {
        EXPECT_TRUE(plugin.request(check) && plugin.commit(check) && plugin.rollback(check));
        for (const int code : {57, 24, 238, 239, 237})
            plugin.handleEvent(Event(code));
    };
    callEverything({});
    EXPECT_EQ(card->getOperationId(), u"basket-1");

    card->setOperationId({});
    for (const int code : {57, 24, 238})
        raise(code);
    document->removeCard(card);
    callEverything(document);
    EXPECT_TRUE(plugin.spendPoints());
    plugin.setDocument({});
    callEverything({});
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_TRUE(queued.isEmpty());
}

} // namespace kvo
