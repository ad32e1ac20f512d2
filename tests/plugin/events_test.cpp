// Which event of the host does what, and how the order is kept in step with the check.
#include "pluginfixture.h"

namespace kvo {

namespace {

class Events : public PluginTest
{
protected:
    Events()
    {
        card->setOperationInfo(priced);
        document->addGoodsItem(builder::line(500));
        ON_CALL(*client, requestOnline).WillByDefault([this](const Request &request) {
            const QString method = request.url.path().section(u'/', -1);
            sent.append(method);
            bodies.append(request.payload.object());
            if (failures.removeOne(method))
                throw BasicException(refusal);
            return response(R"({"earnPoints": 2})");
        });
        ON_CALL(*client, calculateOrder).WillByDefault([this](const auto &, const auto &) {
            sent.append(u"calculateOrder"_s);
            return response("{}");
        });
    }

    const QJsonObject priced = client->createOrderBody(document, card, false);
    QStringList sent;
    QStringList failures; ///< Methods that fail, once for each entry.
    QList<QJsonObject> bodies;
};

} // namespace

TEST_F(Events, LeadToUpdatesAndNewPricings)
{
    const QStringList reissued{u"cancelOrder"_s, u"calculateOrder"_s};
    const struct
    {
        const char *name;
        QList<int> codes;
        QStringList calls;
    } cases[] = {
        {"a subtotal alone", {24}, {}},
        {"a change and the subtotal", {57, 24}, {u"updateOrder"_s}},
        {"only the first subtotal after a change", {57, 24, 24}, {u"updateOrder"_s}},
        {"a change taken back", {57, 237, 24}, {}},
        {"taken back with nothing pending", {237}, reissued},
        {"payment", {238}, {u"updateOrder"_s}},
        {"the result was dropped", {239}, reissued},
        {"others", {0, 1, 25, 240}, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        card->setOperationId(u"basket-1"_s);
        sent.clear();
        plugin.orderCreated = true;
        plugin.pendingUpdate = false;
        document->addGoodsItem(builder::line(1000));
        for (const int code : c.codes)
            raise(code);
        EXPECT_EQ(sent, c.calls);
    }
}

TEST_F(Events, AFailedCancellationIsTheHostsToKnow)
{
    failures = {u"cancelOrder"_s};
    EXPECT_THROW(raise(239), BasicException);
    EXPECT_EQ(card->getOperationId(), u"basket-1");
    EXPECT_EQ(sent, QStringList{u"cancelOrder"_s});
}

TEST_F(Events, AnUpdateCreatesTheOrderAsItWasPricedFirst)
{
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    raise(57);
    raise(24);
    EXPECT_EQ(sent, (QStringList{u"createOrder"_s, u"updateOrder"_s}));
    EXPECT_EQ(bodies[0], priced);
    EXPECT_EQ(bodies[1].value("orderLines"_L1).toArray().size(), 3);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), bodies[1]);
    EXPECT_FALSE(plugin.pendingUpdate);
    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(true));
    EXPECT_EQ(plugin.getPluginData(u"pointsForEarn"_s, {}), QVariant(2.0));
    EXPECT_EQ(plugin.getPluginData(u"bonusRecords"_s, {}).value<QList<DocumentBonusRecord>>().size(), 3);
}

TEST_F(Events, AnUpdateSendsNothingForAnUnchangedCheck)
{
    document->removeGoodsItem(3);
    plugin.pendingUpdate = true;
    raise(24);
    EXPECT_TRUE(sent.isEmpty() && plugin.pendingUpdate);
    card->setOperationInfo(priced.toVariantMap()); // As after a restart.
    raise(238);
    EXPECT_TRUE(sent.isEmpty());
}

TEST_F(Events, AnUpdateRepeatsOnlyWhatFailed)
{
    failures = {u"createOrder"_s, u"updateOrder"_s};
    expectRetries(u"Ошибка при обновлении заказа.\nПовторить или удалить карту из чека?"_s, 2);
    raise(238);
    EXPECT_EQ(sent, (QStringList{u"createOrder"_s, u"createOrder"_s, u"updateOrder"_s, u"updateOrder"_s}));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
}

} // namespace kvo
