// Keeping the order in step with the check.
#include "pluginfixture.h"

namespace kvo {

namespace {

class Update : public PluginTest
{
protected:
    Update()
    {
        card->setOperationInfo(priced);
        plugin.pendingUpdate = true;
        document->goods.append(makeGoodsItem(3, 5));
        ON_CALL(*client, requestOnline).WillByDefault([this](const Request &request) {
            const QString method = request.url.path().section(u'/', -1);
            sent.append(method);
            bodies.append(request.payload.object());
            if (failures.removeOne(method))
                throw BasicException(u"отказ"_s);
            return response(R"({"earnPoints": 2})");
        });
    }

    const QJsonObject priced = client->createOrderBody(document, card, false);
    QStringList sent;
    QStringList failures; ///< Methods that fail, once for each entry.
    QList<QJsonObject> bodies;
};

} // namespace

TEST_F(Update, CreatesTheOrderAsItWasPricedFirst)
{
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    raise(EventCode::SubtotalEntered);

    EXPECT_EQ(sent, (QStringList{u"createOrder"_s, u"updateOrder"_s}));
    EXPECT_EQ(bodies[0], priced);
    EXPECT_EQ(bodies[1].value("orderLines"_L1).toArray().size(), 3);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), bodies[1]);
    EXPECT_FALSE(plugin.pendingUpdate);
    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(true));
    EXPECT_EQ(plugin.getPluginData(u"pointsForEarn"_s, {}), QVariant(2.0));
    EXPECT_EQ(plugin.getPluginData(u"bonusRecords"_s, {}).value<QList<DocumentBonusRecord>>().size(), 3);
}

TEST_F(Update, SendsNothingForAnUnchangedCheck)
{
    document->goods.removeLast();
    raise(EventCode::SubtotalEntered);
    EXPECT_TRUE(sent.isEmpty());
    EXPECT_TRUE(plugin.pendingUpdate);

    // After a restart the accepted order is a plain map.
    card->setOperationInfo(priced.toVariantMap());
    raise(EventCode::PaymentStarted);
    EXPECT_TRUE(sent.isEmpty());
}

TEST_F(Update, RepeatsOnlyWhatFailed)
{
    failures = {u"createOrder"_s, u"updateOrder"_s};
    expectQuestions(updateError, {true, true});
    raise(EventCode::PaymentStarted);
    EXPECT_EQ(sent, (QStringList{u"createOrder"_s, u"createOrder"_s, u"updateOrder"_s, u"updateOrder"_s}));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_FALSE(plugin.pendingUpdate);
}

TEST_F(Update, TheCashierMayDoWithoutTheCard)
{
    failures = {u"updateOrder"_s};
    expectQuestions(updateError, {false});
    EXPECT_CALL(*cardAddLogic, removeCard(DocumentPtr(document), card));
    EXPECT_CALL(*saveToFile, save).Times(0);
    raise(EventCode::PaymentStarted);
    EXPECT_TRUE(plugin.orderCreated);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), priced);
}

TEST_F(Update, LeavesACheckThatWasNeverPriced)
{
    card->setOperationId(QString());
    raise(EventCode::SubtotalEntered);
    EXPECT_TRUE(sent.isEmpty());
}

} // namespace kvo
