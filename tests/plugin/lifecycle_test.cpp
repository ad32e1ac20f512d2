// The order from pricing to the closed or voided check.
#include "pluginfixture.h"
#include "tests/support/logfile.h"

namespace kvo {

using Lifecycle = PluginTest;

TEST_F(Lifecycle, PricingStoresPointsAndOrder)
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

    service.failures = {u"calculateOrder"_s};
    plugin.setPluginData(u"orderCreated"_s, true);
    EXPECT_FALSE(plugin.request(document));
    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(false));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_EQ(plugin.pointsForSpend, 12.5);
}

// Neither by a restart nor when a parked check is resumed.
TEST_F(Lifecycle, AResultThatWasDroppedOrReplacedDoesNotComeBack)
{
    const std::function<void()> steps[] = {
        [this] {
            serviceAnswers(R"({"earnPoints": -1, "redeemPoints": [{"points": 7}]})");
            const QVariant info = card->getOperationInfo();
            card->setOperationId(QString());
            EXPECT_THROW(plugin.request(document), BasicException);
            EXPECT_EQ(std::tuple(card->getOperationId(), card->getOperationInfo()), std::tuple(QString(), info));
        },
        [this] {
            service.failures = {u"calculateOrder"_s};
            raise(239);
        },
        [] { Singleton<ActivityNotifier>::instance()->notify(Event(239, {})); },
    };
    for (const auto &step : steps) {
        serviceAnswers(R"({"earnPoints": 3, "redeemPoints": [{"lineId": 1, "points": 10}]})");
        EXPECT_TRUE(plugin.request(document) && plugin.spendPoints() && !plugin.bonusImpacts.isEmpty());
        step();
        const double points = plugin.pointsForSpend;
        const auto records = plugin.bonusRecords;
        EXPECT_TRUE(plugin.restoreLoyaltySystem());
        EXPECT_FALSE(plugin.orderCreated);
        EXPECT_TRUE(plugin.bonusImpacts.isEmpty());
        EXPECT_EQ(plugin.bonusRecords, records);
        EXPECT_EQ(plugin.pointsForSpend, points);
    }
}

TEST_F(Lifecycle, ClosingCreatesOneOrderWithoutSpending)
{
    card->setOperationId(QString());
    plugin.orderCreated = true; // Of an earlier check's order.
    service.failures = {u"createOrder"_s, u"createOrder"_s};
    expectRetries(createError, 2);
    QString saved; // What the disk knows of the order when the service first hears of it.
    ON_CALL(*saveToFile, save).WillByDefault([&] {
        if (service.calls.isEmpty())
            saved = card->getOperationId();
    });
    EXPECT_TRUE(plugin.commit(document));
    EXPECT_EQ(service.calls, QStringList(3, u"createOrder"_s));
    EXPECT_EQ(saved, service.bodies[0].value("basket"_L1).toString());
    const QJsonObject created = service.bodies[0];
    EXPECT_EQ(service.bodies, QList<QJsonObject>(3, created)) << "every attempt names the same order";
    EXPECT_EQ(created.value("basket"_L1).toString().size(), 36);
    EXPECT_TRUE(created.value("orderLines"_L1)[0]["noDiscountAllowed"_L1].toBool());
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");

    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(true));
    EXPECT_TRUE(plugin.commit(document));
    EXPECT_EQ(service.calls.size(), 3) << "repeated";
    EXPECT_EQ(queued, (QStringList{u"postOrder"_s, u"bindOrderId"_s, u"postOrder"_s, u"bindOrderId"_s}));
    EXPECT_EQ(queuedBodies[2], created);
    EXPECT_EQ(queuedBodies[3].value("basket"_L1), created.value("basket"_L1));
}

TEST_F(Lifecycle, RestoringPassesOverWhatItCannotRead)
{
    LogFile log;
    plugin.bonusImpacts = plugin.createBonusImpacts(card, Response(json(R"({"redeemPoints": [{"points": 1}]})")));
    const QVariantList impacts = QVariant::fromValue(plugin.bonusImpacts).toList();
    QVariantList damaged = impacts;
    damaged.append(u"text"_s);
    const QVariantMap record{{u"cardNumber"_s, u"2000"_s}, {u"amount"_s, u"x"_s}, {u"position"_s, 2}, {u"z"_s, 1}};
    const auto noRecords = QVariant::fromValue(QList<DocumentBonusRecord>());
    const std::tuple<QVariantMap, QString, qsizetype> cases[] = {
        {{{u"pointsForSpend"_s, u"x"_s}, {u"bonusImpacts"_s, impacts}}, u"pointsForSpend\n"_s, 1},
        {{{u"bonusRecords"_s, QVariantList{record}}}, u"amount\n"_s, 0},
        {{{u"bonusRecords"_s, QVariantList{QVariantMap(), 7}}}, u"bonusRecords\n"_s, 0},
        {{{u"bonusRecords"_s, u"x"_s}, {u"bonusImpacts"_s, damaged}}, u"bonusRecords, bonusImpacts\n"_s, 0},
        {{{u"bonusRecords"_s, noRecords}, {u"bonusImpacts"_s, QVariantList()}}, {}, 0},
        {{{u"orderCreated"_s, QVariantMap()}}, u"orderCreated\n"_s, 0},
        {{}, {}, 0},
    };
    for (const auto &[data, skipped, restored] : cases) {
        document->setPluginData(plugin.getStoreDataKey(), data);
        if (skipped != "orderCreated\n"_L1)
            plugin.setPluginData(u"orderCreated"_s, true);
        EXPECT_TRUE(plugin.restoreLoyaltySystem());
        EXPECT_EQ(plugin.orderCreated, skipped != "orderCreated\n"_L1) << "later keys are read";
        EXPECT_EQ(plugin.bonusImpacts.size(), restored);
        const QString warnings = log.take();
        EXPECT_EQ(warnings.count(u'\n'), skipped.isEmpty() ? 0 : 1) << warnings.toStdString();
        EXPECT_TRUE(warnings.endsWith(skipped)) << warnings.toStdString();
        if (skipped == "amount\n"_L1) {
            EXPECT_EQ(plugin.bonusRecords.value(0).amount, 0);
            EXPECT_EQ(plugin.bonusRecords.value(0).position, 2);
        }
    }
}

TEST_F(Lifecycle, VoidingQueuesTheCancellationOnceAndForgetsTheCustomer)
{
    plugin.customer = json(R"({"a": 1})");
    card->setOperationInfo(QVariantMap{{u"a"_s, 1}});
    EXPECT_TRUE(plugin.rollback({}) && plugin.rollback(document) && plugin.cancel());
    EXPECT_EQ(queued, QStringList{u"cancelOrder"_s});
    EXPECT_EQ(queuedBodies[0].value("basket"_L1), u"basket-1"_s);
    EXPECT_TRUE(card->getOperationId().isEmpty() && card->getOperationInfo().isNull() && plugin.customer.isEmpty());
}

TEST_F(Lifecycle, VoidingQueuesNothingThatCouldNeverBeDelivered)
{
    const FakeConfig nowhere({{u"Kvo:host"_s, u"http://h:80a80"_s}});
    plugin.interface.reset(new Interface);
    EXPECT_THROW(plugin.rollback(document), BasicException);
    EXPECT_TRUE(queued.isEmpty());
}

TEST_F(Lifecycle, WithoutCardOrderOrCheckNothingIsSentNorForRefunds)
{
    const auto callEverything = [this](const DocumentPtr &check) {
        EXPECT_TRUE(plugin.request(check) && plugin.commit(check) && plugin.rollback(check));
        for (const int code : {57, 24, 238, 239, 237})
            plugin.handleEvent(Event(code));
        QSharedPointer<DocumentCardRecord> none;
        EXPECT_FALSE(plugin.identifyByCard(none, ECardNumberType::Manual));
    };
    EXPECT_TRUE(plugin.commit(QSharedPointer<SaleDocument>::create(EDocumentType::RefundBySale)));
    card->setOperationId({});
    callEverything({});
    for (const int code : {57, 24, 238})
        raise(code);
    document->removeCard(card);
    callEverything(document);
    EXPECT_TRUE(plugin.spendPoints());
    plugin.setDocument({});
    callEverything({});
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_TRUE(queued.isEmpty() && service.calls.isEmpty());
}

} // namespace kvo
