// Which event of the host does what, and how the order is kept in step with the check.
#include "pluginfixture.h"

namespace kvo {

struct Events : PluginTest
{
    Events()
    {
        card->setOperationInfo(priced);
        document->addGoodsItem(builder::line(500));
        serviceAnswers(R"({"earnPoints": 2})");
    }

    const QJsonObject priced = plugin.interface->createOrderBody(document, card, false);
};

TEST_F(Events, AnUpdateCreatesTheOrderAsItWasPricedFirst)
{
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    raise(24);
    raise(57);
    raise(237);
    raise(24);
    EXPECT_TRUE(service.calls.isEmpty()) << "nothing has changed, or no longer";
    raise(57);
    raise(24);
    EXPECT_EQ(service.calls, (QStringList{u"createOrder"_s, u"updateOrder"_s}));
    EXPECT_EQ(service.bodies[0], priced);
    EXPECT_EQ(service.bodies[1].value("orderLines"_L1).toArray().size(), 3);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), service.bodies[1]);
    EXPECT_FALSE(plugin.pendingUpdate);
    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(true));
    EXPECT_EQ(plugin.getPluginData(u"pointsForEarn"_s, {}), QVariant(2.0));
    EXPECT_EQ(plugin.getPluginData(u"bonusRecords"_s, {}).value<QList<DocumentBonusRecord>>().size(), 3);
}

TEST_F(Events, AnUpdateSendsNothingForTheOrderThatWasAccepted)
{
    document->removeGoodsItem(3);
    card->setOperationInfo(priced.toVariantMap()); // As a host may bring it back from the disk.
    raise(238);
    EXPECT_TRUE(service.calls.isEmpty());
}

TEST_F(Events, AnUpdateRepeatsOnlyWhatFailed)
{
    service.failures = {u"createOrder"_s, u"updateOrder"_s};
    expectRetries({u"kvoUpdateOrderError"_s, u"Ошибка при обновлении заказа.\nПовторить или удалить карту из чека?"_s},
                  3);
    EXPECT_CALL(*saveToFile, save).WillOnce(Throw(BasicException(u"диск полон"_s))).WillRepeatedly(Return());
    EXPECT_FALSE(plugin.init()) << "twice";
    raise(238);
    EXPECT_EQ(service.calls.join(u' '), u"createOrder createOrder updateOrder updateOrder updateOrder");
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"диск полон");

    EXPECT_TRUE(plugin.deinit());
    document->addGoodsItem(builder::line(100));
    raise(238);
    EXPECT_EQ(service.calls.size(), 5) << "no longer subscribed";
}

} // namespace kvo
