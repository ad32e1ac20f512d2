// The order from pricing to the closed or voided check.
#include "pluginfixture.h"

namespace kvo {

using Lifecycle = PluginTest;

TEST_F(Lifecycle, PricingStoresPointsAndOrderUnlessItFails)
{
    plugin.bonusImpacts = plugin.createBonusImpacts(card, Response(json(R"({"redeemPoints": [{"points": 1}]})")));
    plugin.orderCreated = true;
    card->setOperationId({});
    serviceAnswers(R"({"earnPoints": 3, "redeemPoints": [{"lineId": 1, "points": 10}, {"points": 2.5}, {}, 7]})");
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    EXPECT_TRUE(plugin.request(document));
    EXPECT_TRUE(plugin.bonusImpacts.isEmpty());
    EXPECT_EQ(plugin.pointsForSpend, 12.5);
    EXPECT_EQ(card->getPointsForSpend(), 12.5);
    const QJsonObject priced = service.bodies[0];
    EXPECT_EQ(card->getOperationId(), priced.value("basket"_L1).toString());
    EXPECT_EQ(card->getOperationId().size(), 36);
    EXPECT_EQ(plugin.getPluginData(u"pointsForEarn"_s, {}), QVariant(3.0));
    EXPECT_FALSE(plugin.orderCreated);

    plugin.orderCreated = true;
    document->addGoodsItem(builder::line(100));
    service.failures = {u"calculateOrder"_s};
    EXPECT_FALSE(plugin.request(document));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_EQ(plugin.pointsForSpend, 12.5) << "a failure leaves the points";
    EXPECT_EQ(card->getOperationId(), priced.value("basket"_L1).toString());
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), priced);
    EXPECT_FALSE(plugin.orderCreated);
}

TEST_F(Lifecycle, ClosingCreatesOneOrderWithoutSpending)
{
    card->setOperationId(QString());
    service.failures = {u"createOrder"_s, u"createOrder"_s};
    expectRetries(createError, 2);
    EXPECT_TRUE(plugin.commit(document));
    EXPECT_EQ(service.calls, QStringList(3, u"createOrder"_s));
    const QJsonObject created = service.bodies[0];
    EXPECT_EQ(service.bodies, QList<QJsonObject>(3, created)) << "every attempt names the same order";
    EXPECT_EQ(created.value("basket"_L1).toString().size(), 36);
    EXPECT_TRUE(created.value("orderLines"_L1)[0]["noDiscountAllowed"_L1].toBool());
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");

    EXPECT_EQ(queued, (QStringList{u"postOrder"_s, u"bindOrderId"_s}));
    EXPECT_EQ(queuedBodies[0], created);
    QJsonObject binding = orderReference;
    binding.insert("basket"_L1, created.value("basket"_L1));
    binding.insert("orderID"_L1, document->getIdentifier());
    EXPECT_EQ(queuedBodies[1], binding);
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

TEST_F(Lifecycle, AFullQueueIsTheHostsBusiness)
{
    plugin.orderCreated = true;
    EXPECT_CALL(*queue, push).WillRepeatedly(Throw(BasicException(u"отказ"_s)));
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
    EXPECT_EQ(queuedBodies[0], orderReference);
    EXPECT_TRUE(card->getOperationId().isEmpty() && card->getOperationInfo().isNull() && plugin.customer.isEmpty());
}

TEST_F(Lifecycle, WithoutCardOrderOrCheckNothingIsSentNorForRefunds)
{
    const auto callEverything = [this](const DocumentPtr &check) {
        EXPECT_TRUE(plugin.request(check) && plugin.commit(check) && plugin.rollback(check));
        for (const int code : {57, 24, 238, 239, 237})
            plugin.handleEvent(Event(code));
    };
    EXPECT_TRUE(plugin.commit(QSharedPointer<SaleDocument>::create(EDocumentType::RefundBySale)));
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
    EXPECT_TRUE(service.calls.isEmpty());
}

} // namespace kvo
