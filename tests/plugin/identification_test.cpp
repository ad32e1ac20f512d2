// Who the card belongs to: what is asked of the service, and what is written on the check.
#include "pluginfixture.h"

namespace kvo {

const auto customerObject =
    json(R"({"CustAccount": "C7", "LastName": "Иванов", "FirstName": "Пётр", "BirthDate": "1990-05-17 00:00:00",
             "Gender": 1, "Email": "p@example.org", "Phone": "+79001234567", "CardNumber": "2001"})");

using Identification = PluginTest;

TEST_F(Identification, ByPhoneSearchesOnce)
{
    EXPECT_CALL(*client, searchCustomer(u"+79001234567"_s, ECardNumberType::Phone)).WillOnce(Return(customerObject));
    EXPECT_CALL(*client, cardInfo(u"2001"_s, u"C7"_s));
    EXPECT_CALL(*client, loyaltyBonusInfo(u"2001"_s, u"C7"_s)).WillOnce(Return(150.5));
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));

    const auto found = plugin.getCardNumber({static_cast<int>(ECardNumberType::Phone), u"+79001234567"_s});
    EXPECT_TRUE(found.success);
    EXPECT_EQ(found.cardNumber, u"2001");
    EXPECT_TRUE(plugin.identifyByCard(card, ECardNumberType::Phone));

    const auto holder = card->getCard()->getClient();
    EXPECT_EQ(holder->getIdClient(), u"C7");
    EXPECT_EQ(holder->getName(), u"Иванов Пётр ");
    EXPECT_EQ(holder->getBirthday(), QDate(1990, 5, 17));
    EXPECT_EQ(holder->getSex(), Client::Sex::Male);
    EXPECT_EQ(holder->getEmail(), u"p@example.org");
    EXPECT_EQ(holder->getPhoneNumber(), u"+79001234567");
    EXPECT_EQ(card->getNumber(), QVariant(u"2001"_s));
    EXPECT_EQ(card->getBonusBalance(), QVariant(150.5));
    EXPECT_EQ(plugin.getPluginData(u"pointsForSpend"_s, {}), QVariant(150.5));
}

TEST_F(Identification, TheLastTierInForceStands)
{
    const struct
    {
        const char *tiers, *status;
        int tier;
    } cases[] = {
        {R"({"Tiers": [{"Name": "A", "Discount": 5}, {"Name": "B", "Discount": -1}]})", "A", 5},
        {R"({"Tiers": [{"Name": "B", "Discount": -1}, {"Name": "A", "Discount": 5}]})", "A", 5},
        {R"({"Tiers": [{"Name": "A", "Discount": 5}, {"Name": "B"}]})", "B", 0},
        {R"({"Tiers": [{"Name": "C", "Discount": -1}]})", "B", 0}, // As before.
    };
    for (const auto &c : cases) {
        EXPECT_CALL(*client, cardInfo).WillOnce(Return(json(c.tiers)));
        EXPECT_TRUE(plugin.identifyByCard(card, ECardNumberType::Manual));
        const QVariantMap options = card->getExtendedOptions().toMap();
        EXPECT_EQ(options.value(u"loyaltyStatus"_s).toString(), QString::fromUtf8(c.status)) << c.tiers;
        EXPECT_EQ(options.value(u"loyaltyTier"_s).toInt(), c.tier) << c.tiers;
    }
}

TEST_F(Identification, FailuresAreReported)
{
    plugin.customer = customerObject;
    EXPECT_CALL(*client, searchCustomer).WillOnce(Throw(refusal));
    const auto found = plugin.getCardNumber({static_cast<int>(ECardNumberType::Phone), u"+7"_s});
    EXPECT_FALSE(found.success);
    EXPECT_EQ(found.error.ru(), u"отказ");
    EXPECT_TRUE(plugin.customer.isEmpty());

    EXPECT_CALL(*client, searchCustomer).WillOnce(Return(customerObject));
    EXPECT_CALL(*client, loyaltyBonusInfo).WillOnce(Throw(refusal));
    EXPECT_CALL(*saveToFile, save).Times(0);
    EXPECT_FALSE(plugin.identifyByCard(card, ECardNumberType::Manual));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_EQ(card->getNumber(), QVariant(u"2001"_s));
}

} // namespace kvo
