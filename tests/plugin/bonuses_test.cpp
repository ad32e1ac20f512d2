// What the service's answer becomes on the check.
#include "pluginfixture.h"

#include <core/session.h>

namespace kvo {

using Bonuses = PluginTest;

TEST_F(Bonuses, PointsOfALineBecomeADiscountOnIt)
{
    card->setCodeInternal(4);
    const auto impacts = plugin.createBonusImpacts(
        card, response(R"({"redeemPoints": [{"lineId": 1, "points": 10.5}, {"lineId": 2, "points": 0.005},
                                            {"points": 0.0051}, "text"]})"));

    ASSERT_EQ(impacts.size(), 2);
    const auto totals = impacts[0]->getTotals();
    EXPECT_EQ(totals->getCardRecord(), card);
    EXPECT_EQ(totals->getCardIndex(), QVariant(4));
    EXPECT_EQ(totals->getDateTime(), FixedTime().currentDateTime());
    EXPECT_EQ(static_cast<int>(totals->getDiscountType()), 5);
    EXPECT_EQ(static_cast<int>(totals->getDiscountMode()), 2);
    EXPECT_EQ(totals->getDiscountName(), u"Баллы Kvo");
    EXPECT_EQ(static_cast<int>(totals->getDiscountObject()), 1);
    EXPECT_EQ(totals->getDiscountRate(), QVariant(10.5));
    EXPECT_EQ(static_cast<int>(totals->getImpactSource()), 2);
    EXPECT_TRUE(totals->isMinPriceIgnored());
    ASSERT_EQ(impacts[0]->getDetails().size(), 1);
    EXPECT_EQ(impacts[0]->getDetails()[0]->getPosition(), 1);
    EXPECT_EQ(impacts[0]->getDetails()[0]->getDiscountSum(), 10.5);

    EXPECT_EQ(impacts[1]->getTotals()->getPosition(), 0);
    EXPECT_EQ(impacts[1]->getTotals()->getDiscountSum(), 0.0051);
    EXPECT_EQ(impacts[1]->getDetails()[0]->getDiscountSum(), 0.0051);

    EXPECT_TRUE(plugin.createBonusImpacts(card, response("{}")).isEmpty());
}

TEST_F(Bonuses, PointsToEarnAreSpreadOverTheLines)
{
    Singleton<Session>::instance()->setUser(QSharedPointer<User>::create(17, u"Анна"_s));
    plugin.createBonusRecords(card, response(R"({"earnPoints": 10.01})"));

    double sum = 0;
    for (const auto &record : std::as_const(plugin.bonusRecords)) {
        EXPECT_EQ(record.cardNumber, u"2000");
        EXPECT_EQ(record.userCode, u"17");
        EXPECT_EQ(record.dateTime, FixedTime().currentDateTime());
        sum += record.amount;
    }
    EXPECT_EQ(plugin.bonusRecords.size(), 2);
    EXPECT_NEAR(sum, 10.01, 1e-9);
    EXPECT_EQ(plugin.pointsForEarn, 10.01);
    EXPECT_EQ(card->getPointsForEarn(), QVariant(10.01));
    Singleton<Session>::replace({});
}

} // namespace kvo
