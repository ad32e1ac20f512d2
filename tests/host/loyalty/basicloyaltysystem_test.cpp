// What every loyalty system inherits: points that add up, the card it answers for, its data with the check, and a
// registry that never keeps a system that is gone.
#include "tests/support/checkbuilder.h"

#include <core/singleton.h>
#include <loyalty/loyaltysystems.h>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

class Loyalty : public BasicLoyaltySystem
{
public:
    explicit Loyalty(int code) { loyaltySystemCode = code; }

    using BasicLoyaltySystem::bonusRecords;
    using BasicLoyaltySystem::pointsForEarn;
    using BasicLoyaltySystem::pointsForSpend;
};

class BasicLoyaltySystemTest : public testing::Test
{
protected:
    ~BasicLoyaltySystemTest() override { Singleton<LoyaltySystems>::replace({}); }

    Loyalty system{26};
};

TEST_F(BasicLoyaltySystemTest, SpreadsEarnedPointsToTheHundredth)
{
    struct
    {
        const char *label;
        QList<qint64> prices;
        double amount;
        QList<int> positions;
        QList<double> amounts;
    } const cases[] = {
        {"in proportion", {30000, 10000}, 4.0, {1, 2}, {3.0, 1.0}},
        {"a remainder", {10000, 10000, 10000}, 0.1, {1, 2, 3}, {0.04, 0.03, 0.03}},
        {"less than there are lines", {10000, 10000}, 0.01, {1}, {0.01}},
        {"a free line earns nothing", {0, 10000}, 5.0, {2}, {5.0}},
        {"no line that is paid for", {0}, 5.0, {0}, {5.0}},
        {"an empty check", {}, 5.0, {0}, {5.0}},
        {"no points", {10000}, 0.0, {0}, {0.0}},
    };
    for (const auto &[label, prices, amount, positions, amounts] : cases) {
        SCOPED_TRACE(label);
        const DocumentBonusRecord whole{u"2600001"_s, amount, QDateTime::currentDateTime(), u"cashier"_s, 0};
        const auto records = system.distributeBonusRecord(builder::check(prices), whole);
        QList<int> gotPositions;
        QList<double> gotAmounts;
        for (DocumentBonusRecord record : records) {
            gotPositions.append(record.position);
            gotAmounts.append(record.amount);
            record.position = whole.position;
            record.amount = whole.amount;
            EXPECT_EQ(record, whole);
        }
        EXPECT_EQ(gotPositions, positions);
        EXPECT_EQ(gotAmounts, amounts);
    }
    EXPECT_EQ(system.distributeBonusRecord({}, {}).size(), 1);
}

TEST_F(BasicLoyaltySystemTest, SpreadsOverWhatIsPaidForOnLinesThatEarn)
{
    const auto check = builder::check({20000, 10000, 10000});
    check->findGoodsItem(3)->setAllowBonusEarn(false);
    check->addImpact(builder::shares({{1, 100.00}}));
    const auto records = system.distributeBonusRecord(check, {u"1"_s, 3.01, {}, {}, 0});
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[0].amount, 1.51);
    EXPECT_EQ(records[1].amount, 1.50);
}

TEST_F(BasicLoyaltySystemTest, OffersNoMorePointsThanTheCheckStillCosts)
{
    const auto check = builder::check({10000});
    system.setPointsForSpend(150);
    EXPECT_EQ(system.getPointsForSpend(check), 100);
    check->addImpact(builder::discount(30.5));
    system.recalculateAllPoints(check);
    EXPECT_EQ(system.getPointsForSpend(check), 69.5);
    EXPECT_EQ(system.getPointsForSpend({}), 0);
    system.recalculatePointsForSpend({});
    EXPECT_EQ(system.pointsForSpend, 69.5);
    system.setPointsForSpend(-1);
    EXPECT_FALSE(system.hasPointsForSpend());
}

TEST_F(BasicLoyaltySystemTest, SpendsPointsAsADiscountThatFitsTheCheck)
{
    const auto check = builder::check({10000, 5000});
    check->findGoodsItem(2)->setAllowDiscount(false);
    const auto card = builder::card(u"1"_s, 26);
    check->addCard(card);
    system.setDocument(check);
    system.setPointsForSpend(99.97);
    system.setRoundPrecisionForSpend(0.1);
    system.setRoundPrecisionForSpend(0);
    ASSERT_TRUE(system.spendPoints());
    ASSERT_EQ(system.getBonusImpactsForSpend().size(), 1);
    check->addImpact(system.getBonusImpactsForSpend().first());
    EXPECT_EQ(check->findGoodsItem(1)->getDiscountSum().kopecks(), 9990);
    EXPECT_EQ(check->getDiscountImpacts().first()->getCardRecord(), card);
    EXPECT_EQ(system.getBonusImpactsLimits(check), (QHash<int, double>{{1, 0.10}, {2, 0.0}}));

    system.setPointsForSpend(500);
    system.spendPoints();
    EXPECT_EQ(system.getBonusImpactsForSpend().first()->getTotals()->getDiscountSum(), 0.1);
    system.setDocument({});
    system.spendPoints();
    EXPECT_FALSE(system.hasBonusImpacts());
}

TEST_F(BasicLoyaltySystemTest, CountsAndDropsEarnedPoints)
{
    system.bonusRecords = {{u"1"_s, 0.1, {}, {}, 1}, {u"1"_s, 0.2, {}, {}, 2}, {u"2"_s, 0.4, {}, {}, 2}};
    system.recalculatePointsForEarn();
    EXPECT_EQ(system.getPointsForEarn(), 0.7);
    EXPECT_EQ(system.calculatePointsForEarnByQualifier({}, 2), 0.6);
    EXPECT_EQ(system.calculatePointsForEarnByQualifier(u"2"_s, 2), 0.4);
    EXPECT_TRUE(system.removeEarnByValutCode(3));
    EXPECT_FALSE(system.removeEarnAfterClose());
    EXPECT_FALSE(system.hasPointsForEarn());
}

TEST_F(BasicLoyaltySystemTest, AnswersForItsOwnCardOnly)
{
    EXPECT_FALSE(system.hasCard());
    const auto check = builder::check({});
    const auto own = builder::card(u"2"_s, 26);
    check->addCard(builder::card(u"1"_s, 27));
    check->addCard(builder::card(u"0"_s));
    system.setDocument(check);
    EXPECT_FALSE(system.hasCard());
    check->addCard(own);
    EXPECT_EQ(system.getCard(), own);
    EXPECT_FALSE(Loyalty(0).hasCard());
}

TEST_F(BasicLoyaltySystemTest, KeepsItsDataWithTheCheck)
{
    system.setPluginData(u"lost"_s, 1);
    EXPECT_TRUE(system.getPluginData().isEmpty());
    const auto check = builder::check({});
    system.setDocument(check);
    system.setPluginData(u"pointsForSpend"_s, 12.5);
    system.setPluginData({{u"pointsForEarn"_s, 2}, {u"other"_s, 3}});
    EXPECT_EQ(check->getPluginData(system.getStoreDataKey()).size(), 3);
    Loyalty other(27);
    other.setDocument(check);
    EXPECT_EQ(other.getPluginData(u"other"_s, u"default"_s), QVariant(u"default"_s));

    Loyalty restarted(26);
    restarted.setDocument(SaleDocument::fromMap(builder::throughJson(check->toMap())));
    restarted.restoreLoyaltySystem();
    EXPECT_EQ(restarted.pointsForSpend, 12.5);
    EXPECT_EQ(restarted.pointsForEarn, 2);
    restarted.clearData();
    EXPECT_FALSE(restarted.hasPointsForSpend());
    EXPECT_TRUE(restarted.getPluginData().isEmpty());
}

TEST_F(BasicLoyaltySystemTest, ForgetsAClosedCheckButNotWhatIsStoredWithIt)
{
    const auto check = builder::check({});
    const auto card = builder::card(u"1"_s, 26);
    card->getCard()->setClient(QSharedPointer<Client>::create());
    check->addCard(card);
    system.setDocument(check);
    EXPECT_FALSE(system.fillCardOwnerInfo());
    card->getCard()->getClient()->setName(u"Иванова Анна "_s);
    EXPECT_TRUE(system.fillCardOwnerInfo());
    EXPECT_TRUE(system.fillCardOwnerInfo());
    EXPECT_EQ(system.getMessagesToCashier(), QList{tr::Tr(u"Владелец карты: Иванова Анна"_s)});
    system.setPluginData(u"pointsForSpend"_s, 1);
    system.setPointsForSpend(1);
    system.clearAfterClose();
    EXPECT_FALSE(system.hasPointsForSpend() || system.hasCard() || !system.getMessagesToCashier().isEmpty());
    EXPECT_EQ(check->getPluginData(system.getStoreDataKey()).size(), 1);
}

TEST_F(BasicLoyaltySystemTest, TakesACardNumberAsItWasEntered)
{
    struct
    {
        ECardNumberType type;
        QString text;
        bool success;
        QString number;
    } const cases[] = {
        {ECardNumberType::Manual, u" 2600001 "_s, true, u"2600001"_s},
        {ECardNumberType::Scanned, u"2600001"_s, true, u"2600001"_s},
        {ECardNumberType::Manual, u"  "_s, false, {}},
        {ECardNumberType::Phone, u"79990001122"_s, false, {}},
    };
    for (const auto &[type, text, success, number] : cases) {
        const auto result = system.getCardNumber({static_cast<int>(type), text});
        EXPECT_EQ(result.success, success) << text.toStdString();
        EXPECT_EQ(result.cardNumber, number);
        EXPECT_EQ(result.error.isEmpty(), success);
    }
    QSharedPointer<DocumentCardRecord> none;
    EXPECT_FALSE(system.identifyByCard(none, ECardNumberType::Manual));
    EXPECT_FALSE(system.getLastErrorString().isEmpty());
}

TEST_F(BasicLoyaltySystemTest, IsFoundByItsCardsWhileItIsRegistered)
{
    const auto card = builder::card(u"1"_s, 26);
    const auto registry = Singleton<LoyaltySystems>::instance();
    EXPECT_FALSE(registry->findByCard(*card));
    EXPECT_TRUE(system.init());
    EXPECT_FALSE(system.init());
    EXPECT_EQ(registry->findByCard(*card), &system);
    EXPECT_FALSE(registry->findByCard(*builder::card(u"1"_s)));
    EXPECT_TRUE(system.deinit());
    EXPECT_TRUE(system.deinit());
    EXPECT_FALSE(registry->findByCard(*card));
}

TEST_F(BasicLoyaltySystemTest, LeavesTheRegistryWhenItIsDestroyed)
{
    const auto registry = Singleton<LoyaltySystems>::instance();
    {
        Loyalty passing(26);
        ASSERT_TRUE(passing.init());
        // Nor does a system outlive its registry in vain.
        Singleton<LoyaltySystems>::replace({});
    }
    EXPECT_TRUE(registry->all().isEmpty());
}

} // namespace
