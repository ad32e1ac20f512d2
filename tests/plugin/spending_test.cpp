// Paying with points and the customer's confirmation.
#include "pluginfixture.h"
#include "tests/support/logfile.h"

#include <core/session.h>

namespace kvo {

using Spending = PluginTest;

TEST_F(Spending, TurnsRedeemedPointsIntoDiscountsAndEarnedOnesIntoRecords)
{
    LogFile log;
    plugin.pointsForSpend = 150;
    plugin.orderCreated = true; // Of an earlier check.
    card->setOperationId({});
    bool isKnown = true; // What the disk says of the order when the service first hears of it.
    ON_CALL(*saveToFile, save).WillByDefault([&] {
        if (service.calls.isEmpty())
            isKnown = plugin.getPluginData(u"orderCreated"_s, {}).toBool();
    });
    serviceAnswers(R"({"earnPoints": 10.01, "redeemPoints":
                       [{"lineId": 1, "points": 12.5}, {"lineId": 2, "points": 0.005}, {"points": 0.0051}, "text"]})");
    Singleton<Session>::instance()->setUser(QSharedPointer<User>::create(17, u"Анна"_s));
    EXPECT_TRUE(plugin.spendPoints());
    Singleton<Session>::replace({});

    EXPECT_FALSE(isKnown);
    EXPECT_EQ(plugin.pointsForEarn, 10.01);
    EXPECT_EQ(card->getPointsForEarn(), QVariant(10.01));
    ASSERT_EQ(plugin.bonusRecords.size(), 2);
    EXPECT_EQ(plugin.bonusRecords[0].cardNumber, u"2000");
    EXPECT_EQ(plugin.bonusRecords[0].userCode, u"17");
    EXPECT_TRUE(plugin.bonusRecords[0].dateTime.isValid());
    EXPECT_NEAR(plugin.bonusRecords[0].amount + plugin.bonusRecords[1].amount, 10.01, 1e-9);
    EXPECT_TRUE(plugin.orderCreated);
    EXPECT_EQ(service.calls, QStringList{u"createOrder"_s});
    EXPECT_FALSE(service.bodies[0].value("orderLines"_L1)[0]["noDiscountAllowed"_L1].toBool());
    EXPECT_EQ(plugin.getPluginData(u"bonusImpacts"_s, {}).value<BonusImpactPtrList>(), plugin.bonusImpacts);
    EXPECT_TRUE(log.take().contains(u"Создание оплаты бонусами в виде скидки на сумму 150.00, по карте 2000"_s));
}

TEST_F(Spending, ImpactsSurviveARestart)
{
    card->setCodeInternal(4);
    serviceAnswers(R"({"redeemPoints": [{"lineId": 1, "points": 12.5}, {"points": 0.0051}]})");
    EXPECT_TRUE(plugin.spendPoints());
    const QVariantList plain = QVariant::fromValue(plugin.bonusImpacts).toList();
    QJsonArray written = QJsonArray::fromVariantList(plain);
    EXPECT_FALSE(written[1]["totals"_L1]["dateTime"_L1].toString().isEmpty());
    EXPECT_EQ(written.size(), 2);
    EXPECT_EQ(written[0]["shares"_L1], (QJsonArray{json(R"({"position": 1, "discountSum": 12.5})")}));
    EXPECT_EQ(written[1]["shares"_L1], (QJsonArray{json(R"({"position": 0, "discountSum": 0.0051})")}));
    QJsonObject totals = written[0]["totals"_L1].toObject();
    totals.remove("dateTime"_L1);
    EXPECT_EQ(totals, json(R"({"cardIndex": 4, "discountType": 5, "discountMode": 2, "discountName": "Баллы Kvo",
        "discountObject": 1, "position": 1, "discountRate": 12.5, "discountSum": 12.5, "impactSource": 2,
        "minPriceIgnored": true})"));
    plugin.setPluginData(u"bonusImpacts"_s, plain);
    plugin.pendingUpdate = true;
    EXPECT_TRUE(plugin.restoreLoyaltySystem());
    EXPECT_FALSE(plugin.pendingUpdate);
    EXPECT_EQ(QVariant::fromValue(plugin.bonusImpacts).toList(), plain);
    for (const auto &detail : {plugin.bonusImpacts[1]->getTotals(), plugin.bonusImpacts[1]->getDetails()[0]})
        EXPECT_EQ(detail->getCardRecord(), card);
}

// Otherwise commit() would post points for which the check shows no discount.
TEST_F(Spending, AnOrderThatGivesNoDiscountCountsAsNotCreated)
{
    for (const bool isDiskFull : {true, false}) {
        serviceAnswers(isDiskFull ? R"({"redeemPoints": [{"points": 5}]})" : R"({"earnPoints": -1})");
        EXPECT_CALL(*saveToFile, save).WillRepeatedly([] { throw BasicException(u"диск полон"_s); });
        EXPECT_THROW(plugin.spendPoints(), BasicException);
        EXPECT_TRUE(plugin.bonusImpacts.isEmpty());
        EXPECT_FALSE(plugin.orderCreated);
        EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(false));
        EXPECT_TRUE(plugin.restoreLoyaltySystem() && plugin.bonusImpacts.isEmpty());
    }
}

TEST_F(Spending, ACodeThatHasNoPlaceInTheMessageIsNotSent)
{
    const FakeConfig settings({{u"Kvo:verificationLimit"_s, 0.0}, {u"Kvo:verificationMessage"_s, u"Код: %2"_s}});
    testing::internal::CaptureStderr();
    EXPECT_THROW(plugin.verification(1), BasicException);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "Qt warns with the code";
    EXPECT_TRUE(service.calls.isEmpty());
}

// The host's dialogs may have loops of their own, in which the card goes.
TEST_F(Spending, ACardThatIsRemovedDuringAQuestionIsLeftAlone)
{
    const FakeConfig settings({{u"Kvo:verificationLimit"_s, 0.0}});
    EXPECT_CALL(*verificationLogic, verify).Times(2).WillRepeatedly([this] { document->removeCard(card); });
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_EQ(service.calls, QStringList{u"send"_s});
    plugin.verification(1);

    document->addCard(card);
    EXPECT_CALL(*verificationLogic, verify);
    service.failures = {u"createOrder"_s};
    EXPECT_CALL(*dialog, question).WillOnce([this] {
        document->removeCard(card);
        return true;
    });
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_EQ(service.calls.count(u"createOrder"_s), 1);
    EXPECT_FALSE(plugin.orderCreated);

    document->addCard(card);
    EXPECT_CALL(*verificationLogic, verify).WillOnce(Throw(BasicException(u"отмена"_s)));
    EXPECT_CALL(*dialog, question).WillOnce(Return(false));
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_FALSE(plugin.hasCard());
}

TEST_F(Spending, TheConfiguredAmountNeedsConfirmation)
{
    const std::tuple<QVariantHash, double, int> cases[] = {
        {{}, 1e9, 0},
        {{{u"Kvo:verificationLimit"_s, -0.01}}, 1, 0},
        {{{u"Kvo:verificationLimit"_s, 0.0}}, 0, 1},
        {{{u"Kvo:verificationLimit"_s, 100.0}}, 99.99, 0},
        {{{u"Kvo:verificationLimit"_s, 100.0}}, 100, 1},
        {{{u"Kvo:verificationLimit"_s, 100.0}}, 15.54 + 48.66 + 35.80, 1}, // a sum just below 100
        {{{u"Kvo:verificationLimit"_s, 0.0}, {u"Kvo:verificationCodeLength"_s, 0}}, 1, 0},
    };
    for (const auto &[settings, amount, codes] : cases) {
        SCOPED_TRACE(amount);
        const FakeConfig configured(settings);
        service.calls.clear();
        EXPECT_CALL(*verificationLogic, verify(_, tr::Tr(), 0)).Times(codes);
        plugin.verification(amount);
        EXPECT_EQ(service.calls, QStringList(codes, u"send"_s));
        testing::Mock::VerifyAndClearExpectations(&*verificationLogic);
    }
}

TEST_F(Spending, CodesAreDigits)
{
    EXPECT_EQ(plugin.getCode(-3), QString());
    QString code = plugin.getCode(1000);
    EXPECT_EQ(code.size(), 1000);
    for (QChar digit = u'0'; digit <= u'9'; ++digit.unicode()) {
        EXPECT_TRUE(code.contains(digit));
        code.remove(digit);
    }
    EXPECT_EQ(code, QString());
}

} // namespace kvo
