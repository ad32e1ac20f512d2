// Paying with points and the customer's confirmation.
#include "pluginfixture.h"
#include "tests/support/logfile.h"

namespace kvo {

namespace {

const auto digits = [](int count) { return testing::MatchesRegex("[0-9]{" + std::to_string(count) + "}"); };

/// Puts the holder of a telephone on the card.
void setPhone(const CardPtr &card, const QString &phone)
{
    auto holder = QSharedPointer<::Client>::create();
    holder->setPhoneNumber(phone);
    card->getCard()->setClient(holder);
}

} // namespace

using Spending = PluginTest;

TEST_F(Spending, TurnsRedeemedPointsIntoDiscounts)
{
    LogFile log;
    plugin.pointsForSpend = 150;
    EXPECT_CALL(*client, createOrder(DocumentPtr(document), card, false))
        .WillOnce(
            Return(response(R"({"earnPoints": 1, "redeemPoints": [{"lineId": 1, "points": 12.5}]})", u"basket-2"_s)));
    EXPECT_TRUE(plugin.spendPoints());

    EXPECT_TRUE(plugin.orderCreated);
    EXPECT_EQ(card->getOperationId(), u"basket-2");
    ASSERT_EQ(plugin.bonusImpacts.size(), 1);
    EXPECT_EQ(plugin.bonusImpacts[0]->getTotals()->getDiscountSum(), 12.5);
    EXPECT_EQ(plugin.pointsForEarn, 1);
    EXPECT_EQ(plugin.getPluginData(u"orderCreated"_s, {}), QVariant(true));
    EXPECT_EQ(plugin.getPluginData(u"bonusImpacts"_s, {}).value<BonusImpactPtrList>(), plugin.bonusImpacts);
    EXPECT_TRUE(log.take().contains(u"Создание оплаты бонусами в виде скидки на сумму 150.00, по карте 2000"_s));
}

TEST_F(Spending, ARetrySendsAFreshCode)
{
    const FakeConfig config({{u"Kvo:verificationLimit"_s, 0.0}, {u"Kvo:verificationCodeLength"_s, 12}});
    setPhone(card, u"+79001234567"_s);
    QStringList codes;
    EXPECT_CALL(*client, verification(_, u"+79001234567"_s)).Times(3);
    EXPECT_CALL(*verificationLogic, verify(_, tr::Tr(), 0))
        .Times(3)
        .WillRepeatedly([&](const QString &code, const auto &, int) {
            codes.append(code);
            if (codes.size() == 1)
                throw BasicException(u"неверный код"_s);
        });
    EXPECT_CALL(*client, createOrder).WillOnce(Throw(refusal)).WillOnce(Return(response("{}")));
    expectQuestions(createError, {true, true});

    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_EQ(QSet<QString>(codes.cbegin(), codes.cend()).size(), 3);
}

TEST_F(Spending, WithoutTheCardNothingChanges)
{
    EXPECT_CALL(*client, createOrder).WillOnce(Throw(refusal));
    expectQuestions(createError, {false});
    EXPECT_CALL(*cardAddLogic, removeCard(DocumentPtr(document), card));
    EXPECT_CALL(*saveToFile, save).Times(0);
    EXPECT_TRUE(plugin.spendPoints());
    EXPECT_FALSE(plugin.orderCreated);
    EXPECT_TRUE(plugin.bonusImpacts.isEmpty());
}

TEST_F(Spending, TheConfiguredAmountNeedsConfirmation)
{
    const struct
    {
        QVariantHash settings;
        double amount;
        bool confirmed;
    } cases[] = {
        {{}, 1e9, false},
        {{{u"Kvo:verificationLimit"_s, -0.01}}, 1, false},
        {{{u"Kvo:verificationLimit"_s, 0.0}}, 0, true},
        {{{u"Kvo:verificationLimit"_s, 100.0}}, 99.99, false},
        {{{u"Kvo:verificationLimit"_s, 100.0}}, 100, true},
        {{{u"Kvo:verificationLimit"_s, 0.0}, {u"Kvo:verificationCodeLength"_s, 0}}, 1, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        const FakeConfig config(c.settings);
        QString text;
        QString code;
        EXPECT_CALL(*client, verification).Times(c.confirmed ? 1 : 0).WillRepeatedly(testing::SaveArg<0>(&text));
        EXPECT_CALL(*verificationLogic, verify).Times(c.confirmed ? 1 : 0).WillRepeatedly(testing::SaveArg<0>(&code));
        plugin.verification(c.amount);
        EXPECT_EQ(text, c.confirmed ? u"Ваш код подтверждения: "_s + code : QString());
        testing::Mock::VerifyAndClearExpectations(client.get());
        testing::Mock::VerifyAndClearExpectations(&*verificationLogic);
    }
}

TEST_F(Spending, CodesAreDigits)
{
    EXPECT_THAT(plugin.getCode(6).toStdString(), digits(6));
    EXPECT_EQ(plugin.getCode(0), QString());
    EXPECT_EQ(plugin.getCode(-3), QString());
    const QString many = plugin.getCode(1000);
    for (QChar digit = u'0'; digit <= u'9'; ++digit.unicode())
        EXPECT_GT(many.count(digit), 0);
}

} // namespace kvo
