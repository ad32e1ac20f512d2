// Who the card belongs to: what is asked of the service, and what is written on the check.
#include "pluginfixture.h"
#include "tests/support/logfile.h"

namespace kvo {

struct Identification : PluginTest
{
    Identification()
    {
        service.answers[u"searchCustomer"_s] = service.ok(R"({"success": true, "data":
            {"CustAccount": "C7", "LastName": "Иванов", "FirstName": "Пётр", "BirthDate": "1990-05-17 00:00:00",
             "Gender": 2, "Email": "p@example.org", "Phone": "+79001234567", "CardNumber": "50% a&b"}})");
        service.answers[u"loyaltyBalanceInfo"_s] = service.ok(R"({"success": true, "data": {"AmountQty": 150.5}})");
    }
};

TEST_F(Identification, ByPhoneSearchesOnce)
{
    LogFile log;
    EXPECT_CALL(*saveToFile, save(DocumentPtr(document), QString(), 0.0));
    const auto found = plugin.getCardNumber({static_cast<int>(ECardNumberType::Phone), u"+79001234567"_s});
    EXPECT_TRUE(found.success);
    EXPECT_EQ(found.cardNumber, u"50% a&b");
    EXPECT_TRUE(plugin.identifyByCard(card, ECardNumberType::Phone));

    EXPECT_EQ(service.calls, (QStringList{u"searchCustomer?Brand=B&Phone=%2B79001234567"_s,
                                          u"cardInfo?Brand=B&CardNumber=50%25%20a%26b&CustAccountNum=C7"_s,
                                          u"loyaltyBalanceInfo?Brand=B&CardNumber=50%25%20a%26b&CustAccountNum=C7"_s}));
    EXPECT_EQ(service.sentOp, QNetworkAccessManager::GetOperation);
    const auto holder = card->getCard()->getClient();
    EXPECT_EQ(std::tuple(holder->getIdClient(), holder->getName(), holder->getEmail(), holder->getPhoneNumber()),
              std::tuple(u"C7"_s, u"Иванов Пётр "_s, u"p@example.org"_s, u"+79001234567"_s));
    EXPECT_EQ(holder->getBirthday(), QDate(1990, 5, 17));
    EXPECT_EQ(holder->getSex(), Client::Sex::Female);
    EXPECT_EQ(card->getNumber(), QVariant(u"50% a&b"_s));
    EXPECT_EQ(card->getBonusBalance(), QVariant(150.5));
    EXPECT_EQ(plugin.getPluginData(u"pointsForSpend"_s, {}), QVariant(150.5));
    EXPECT_TRUE(log.take().contains(u" WARN kvo - Карта чека (…2000) заменена картой"_s));
}

TEST_F(Identification, OnlyOneFormOfBirthdayIsRead)
{
    for (const char *const text :
         {"1990-05-17", "1990-05-17 ", "1990-05-17 00:00", "1990-05-17T00:00:00", "1990-05-17 24:00:00",
          "1990/05/17 00:00:00", "1990-02-30 00:00:00", " 1990-05-17 00:00:00"}) {
        service.answers[u"searchCustomer"_s] = service.ok(R"({"data": {"BirthDate": ")" + QByteArray(text) + "\"}}");
        EXPECT_TRUE(plugin.identifyByCard(card, ECardNumberType::Manual));
        EXPECT_FALSE(card->getCard()->getClient()->getBirthday().isValid()) << text;
    }
}

TEST_F(Identification, TheLastTierInForceStands)
{
    const std::tuple<const char *, const char *, int> cases[] = {
        {R"([{"Name": "A", "Discount": 5}, {"Name": "B", "Discount": -1}])", "A", 5},
        {R"([{"Name": "B", "Discount": -1}, {"Name": "A", "Discount": 5}])", "A", 5},
        {R"([{"Name": "A", "Discount": 5}, {"Name": "B"}])", "B", 0},
        {R"([{"Name": "C", "Discount": -1}])", "B", 0}, // As before.
    };
    for (const auto &[tiers, status, tier] : cases) {
        service.answer = service.ok(R"({"success": true, "data": {"Tiers": )" + QByteArray(tiers) + "}}");
        EXPECT_TRUE(plugin.identifyByCard(card, ECardNumberType::Manual));
        const QVariantMap options = card->getExtendedOptions().toMap();
        EXPECT_EQ(options.value(u"loyaltyStatus"_s).toString(), QString::fromUtf8(status)) << tiers;
        EXPECT_EQ(options.value(u"loyaltyTier"_s).toInt(), tier) << tiers;
    }
}

TEST_F(Identification, FailuresAreReported)
{
    plugin.customer = json(R"({"CustAccount": "of another customer"})");
    service.failures = {u"searchCustomer"_s, u"loyaltyBalanceInfo"_s};
    const auto found = plugin.getCardNumber({static_cast<int>(ECardNumberType::Phone), u"+7"_s});
    EXPECT_FALSE(found.success);
    EXPECT_EQ(found.error.ru(), u"отказ");
    EXPECT_TRUE(plugin.customer.isEmpty());

    EXPECT_CALL(*saveToFile, save).Times(0);
    EXPECT_FALSE(plugin.identifyByCard(card, ECardNumberType::Manual));
    EXPECT_EQ(plugin.getLastErrorString().ru(), u"отказ");
    EXPECT_TRUE(service.calls.contains(u"searchCustomer?Brand=B&CardNumber=2000"_s));
    EXPECT_EQ(plugin.getCardNumber({static_cast<int>(ECardNumberType::Scanned), u"5"_s}).cardNumber, u"5");

    service.failures.clear();
    service.answers[u"loyaltyBalanceInfo"_s] = service.ok(R"({"data": {"AmountQty": 1e300}})");
    EXPECT_FALSE(plugin.identifyByCard(card, ECardNumberType::Manual));
    EXPECT_EQ(plugin.pointsForSpend, 0);
}

} // namespace kvo
