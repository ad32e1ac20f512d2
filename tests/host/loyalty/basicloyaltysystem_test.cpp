// What every loyalty system inherits: points that add up, the card it answers for, and its data with the check.
#include "tests/support/checkbuilder.h"
#include "tests/support/test.h"

#include <core/singleton.h>
#include <loyalty/basicloyaltysystem.h>
#include <loyalty/loyaltysystems.h>

namespace {

struct Loyalty : BasicLoyaltySystem
{
    explicit Loyalty(int code) { loyaltySystemCode = code; }

    using BasicLoyaltySystem::bonusRecords;
    using BasicLoyaltySystem::pointsForEarn;
    using BasicLoyaltySystem::pointsForSpend;
};

struct BasicLoyaltySystemTest : testing::Test
{
    BasicLoyaltySystemTest() { check->addCard(card); }

    QSharedPointer<SaleDocument> check = builder::check({10000, 5000});
    QSharedPointer<DocumentCardRecord> card = builder::card(u"1"_s, 26);
    Loyalty system{26};
};

TEST_F(BasicLoyaltySystemTest, SpreadsEarnedPointsToTheHundredth)
{
    // Prices, points, the points per position.
    const std::tuple<QList<qint64>, double, QList<QPair<int, double>>> cases[] = {
        {{30000, 10000}, 4.0, {{1, 3.0}, {2, 1.0}}},
        {{10000, 10000, 10000}, 0.1, {{1, 0.03}, {2, 0.03}, {3, 0.04}}},
        {{10000, 10000}, 0.01, {{2, 0.01}}},
        {{0, 10000}, 5.0, {{2, 5.0}}},
        {{0}, 5.0, {{0, 5.0}}},
        {{10000}, 0.0, {{0, 0.0}}},
    };
    for (const auto &[prices, points, parts] : cases) {
        const DocumentBonusRecord whole{u"2600001"_s, points, QDateTime::currentDateTime(), u"cashier"_s, 0};
        QList<DocumentBonusRecord> expected;
        for (const auto &[position, part] : parts)
            expected.append({whole.cardNumber, part, whole.dateTime, whole.userCode, position});
        EXPECT_EQ(system.distributeBonusRecord(builder::check(prices), whole), expected) << points;
    }
    EXPECT_EQ(system.distributeBonusRecord({}, {}).size(), 1);
}

TEST_F(BasicLoyaltySystemTest, SpreadsOverWhatIsPaidForOnLinesThatEarn)
{
    const auto discounted = builder::check({20000, 10000, 10000});
    discounted->findGoodsItem(3)->setAllowBonusEarn(false);
    discounted->addImpact(builder::shares({{1, 100.00}}));
    const DocumentBonusRecord first{u"1"_s, 1.50, {}, {}, 1}, second{u"1"_s, 1.51, {}, {}, 2};
    EXPECT_EQ(system.distributeBonusRecord(discounted, {u"1"_s, 3.01, {}, {}, 0}), (QList{first, second}));
}

TEST_F(BasicLoyaltySystemTest, OffersNoMorePointsThanTheCheckStillCosts)
{
    system.setPointsForSpend(200);
    EXPECT_EQ(system.getPointsForSpend(check), 150);
    check->addImpact(builder::discount(30.5));
    system.recalculateAllPoints(check);
    EXPECT_EQ(system.pointsForSpend, 119.5);
    EXPECT_EQ(system.getPointsForSpend({}), 0);
}

TEST_F(BasicLoyaltySystemTest, SpendsPointsAsADiscountThatFitsTheCheck)
{
    check->findGoodsItem(2)->setAllowDiscount(false);
    system.setDocument(check);
    system.setPointsForSpend(99.77);
    system.setRoundPrecisionForSpend(0.1);
    system.setRoundPrecisionForSpend(0); // Makes no sense.
    ASSERT_TRUE(system.spendPoints());
    check->addImpact(system.getBonusImpactsForSpend().first());
    EXPECT_EQ(check->findGoodsItem(1)->getDiscountSum().kopecks(), 9970);
    EXPECT_EQ(check->getDiscountImpacts().first()->getCardRecord(), card);
    system.setPointsForSpend(500);
    system.spendPoints();
    EXPECT_EQ(system.getBonusImpactsForSpend().first()->getTotals()->getDiscountSum(), 0.3);
    system.setPointsForSpend(0);
    EXPECT_TRUE(system.spendPoints() && system.getBonusImpactsForSpend().isEmpty());
}

TEST_F(BasicLoyaltySystemTest, KeepsItsDataWithTheCheckUntilItIsClosed)
{
    system.setPluginData(u"lost"_s, 1); // There is no check yet.
    system.setDocument(check);
    system.setPluginData({{u"pointsForEarn"_s, 2}, {u"pointsForSpend"_s, 12.5}});
    Loyalty other(27);
    other.setDocument(check);
    EXPECT_FALSE(other.hasCard());
    EXPECT_EQ(other.getPluginData(u"pointsForEarn"_s, u"default"_s), QVariant(u"default"_s));

    EXPECT_TRUE(system.restoreLoyaltySystem());
    system.spendPoints();
    system.bonusRecords = {{u"1"_s, 0.1, {}, {}, 0}};
    EXPECT_EQ(system.pointsForSpend, 12.5);
    EXPECT_EQ(system.pointsForEarn, 2);
    system.clearAfterClose();
    EXPECT_FALSE(system.hasPointsForSpend() || system.hasPointsForEarn() || system.hasCard());
    EXPECT_TRUE(system.getBonusImpactsForSpend().isEmpty() && system.getBonusRecords().isEmpty());
    EXPECT_EQ(check->getPluginData(system.getStoreDataKey()).size(), 2) << "a closed check keeps what it has";
    system.setDocument(check);
    EXPECT_TRUE(system.restoreLoyaltySystem());
    system.clearData();
    EXPECT_TRUE(check->getPluginData(system.getStoreDataKey()).isEmpty() && !system.hasPointsForSpend());
}

TEST_F(BasicLoyaltySystemTest, CountsTheRecordsThatItHas)
{
    system.bonusRecords = {{u"1"_s, 0.1, {}, {}, 0}, {u"1"_s, 0.2, {}, {}, 2}, {u"2"_s, 4, {}, {}, 2}};
    EXPECT_EQ(system.calculatePointsForEarnByQualifier({}, 2), 4.2);
    EXPECT_EQ(system.calculatePointsForEarnByQualifier(u"1"_s, 2), 0.2);
    EXPECT_TRUE(system.request(check));
    EXPECT_EQ(system.pointsForEarn, 4.3);
    EXPECT_TRUE(system.removeEarnByValutCode(643));
    EXPECT_TRUE(system.bonusRecords.isEmpty() && !system.hasPointsForEarn());
    EXPECT_FALSE(system.removeEarnAfterClose());
    system.pointsForEarn = 1;
    EXPECT_TRUE(system.removeEarnAfterClose());
}

TEST_F(BasicLoyaltySystemTest, TakesEveryNumberForACard)
{
    const std::tuple<ECardNumberType, QString, QString, QString> cases[] = {
        {ECardNumberType::Manual, u" 5 "_s, u"5"_s, {}},
        {ECardNumberType::Scanned, u"6"_s, u"6"_s, {}},
        {ECardNumberType::Manual, u" "_s, {}, u"Номер не введён"_s},
        {ECardNumberType::Phone, u"+7"_s, {}, u"Поиск карты по этим данным не поддерживается"_s},
    };
    for (const auto &[type, entered, number, error] : cases) {
        const auto found = system.getCardNumber({static_cast<int>(type), entered});
        EXPECT_EQ(std::tuple(found.success, found.cardNumber, found.error.ru()),
                  std::tuple(error.isEmpty(), number, error));
    }
    EXPECT_TRUE(system.identifyByCard(card, ECardNumberType::Manual));
    card->setNumber({});
    EXPECT_FALSE(system.identifyByCard(card, ECardNumberType::Manual));
    EXPECT_FALSE(system.getLastErrorString().isEmpty());
    system.clearLastErrorString();
    EXPECT_TRUE(system.getLastErrorString().isEmpty());
}

TEST_F(BasicLoyaltySystemTest, TellsTheCashierWhatItKnowsOfTheCard)
{
    system.setDocument(check);
    EXPECT_EQ(system.getCardInfo({}).size(), 0);
    EXPECT_EQ(system.getCardInfo(card), QStringList{u"Карта: 1"_s});
    EXPECT_FALSE(system.fillCardOwnerInfo());
    card->getCard()->setClient(QSharedPointer<Client>::create());
    card->getCard()->getClient()->setName(u"Анна  Л. "_s);
    card->setExtendedOptions(QVariantMap{{u"loyaltyStatus"_s, u"Золото"_s}});
    card->setBonusBalance(12.5);
    EXPECT_EQ(system.getCardInfo(card).mid(1).join(u'|'), u"Клиент: Анна Л.|Статус: Золото|Баллы: 12.50");
    EXPECT_TRUE(system.fillCardOwnerInfo() && system.fillCardOwnerInfo());
    EXPECT_EQ(system.getMessagesToCashier(), QList{tr::Tr(u"Владелец карты: Анна Л."_s)});
    system.clearLoyaltyData();
    EXPECT_TRUE(system.getMessagesToCashier().isEmpty());
}

TEST_F(BasicLoyaltySystemTest, IsFoundByItsCardsWhileItIsRegistered)
{
    const auto registry = Singleton<LoyaltySystems>::instance();
    BasicLoyaltySystem none;
    EXPECT_EQ(none.getLoyaltySystemCode(), 0);
    EXPECT_TRUE(none.init() && Loyalty(27).init() && system.init());
    EXPECT_FALSE(system.init() || registry->add(&system) || registry->add(nullptr)) << "twice";
    EXPECT_EQ(registry->findByCard(*card), &system);
    EXPECT_FALSE(registry->findByCard(*builder::card(u"2"_s, 0)) || registry->findByCard(*builder::card(u"2"_s, 27)));
    EXPECT_TRUE(system.deregisterLoyaltySystem() && system.deinit() && none.deinit() && none.init() && none.deinit());
    EXPECT_FALSE(registry->findByCard(*card));
}

} // namespace
