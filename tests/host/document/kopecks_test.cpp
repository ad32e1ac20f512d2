// Sums of a check: whatever is done to it, the discounts of its lines add up to its own, to the kopeck.
#include "checkbuilder.h"

#include <core/basicexception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

// Random operations on one check, and what must hold after each of them.
class Cashier
{
public:
    explicit Cashier(unsigned seed) : m_random(seed) {}

    void act()
    {
        const QVariantMap before = m_check->toMap();
        const Money sumBefore = m_check->getDiscountSum();
        Money added;
        try {
            added = actOnce();
        } catch (const BasicException &) {
            EXPECT_EQ(m_check->toMap(), before) << "a refused operation has changed the check";
            ++refused;
        }
        if (!added.isZero()) {
            EXPECT_EQ(m_check->getDiscountSum(), sumBefore + added);
        }
        expectSumsAgree();
    }

    int refused = 0;

private:
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }
    int position()
    {
        return upTo(m_check->getGoodsItems().isEmpty() ? 1 : m_check->getGoodsItems().last()->getPosnum());
    }
    QSharedPointer<DocumentCardRecord> anyCard() { return m_check->getCardRecords().value(upTo(3)); }

    // Returns the discount that was put on the check.
    Money actOnce()
    {
        switch (upTo(8)) {
        case 0:
        case 1: {
            const auto item = builder::line(upTo(30000), 1 + upTo(3000) / 1000.0, upTo(100));
            item->setAllowDiscount(upTo(4) > 0);
            m_check->addGoodsItem(item);
            return {};
        }
        case 2:
            m_check->changeGoodsItem(position(), upTo(3000) / 1000.0, Money::fromKopecks(upTo(30000)));
            return {};
        case 3:
            m_check->removeGoodsItem(position());
            return {};
        case 4:
            m_check->addCard(builder::card(QString()));
            return {};
        case 5:
            m_check->removeCard(anyCard());
            return {};
        case 6:
            EXPECT_NO_THROW(m_check = SaleDocument::fromMap(builder::throughJson(m_check->toMap())));
            return {};
        case 7: {
            const auto impact = builder::discount(upTo(2000000) / 10000.0, anyCard());
            impact->getTotals()->setMinPriceIgnored(upTo(1) == 0);
            const Money sum = Money::fromRubles(impact->getTotals()->getDiscountSum());
            m_check->addImpact(impact);
            return sum;
        }
        default: {
            // Shares of fractions of a kopeck, more than one of them on the same line.
            const QList<QPair<int, double>> given{{position(), upTo(100000) / 7000.0},
                                                  {position(), upTo(999) / 7000.0}};
            m_check->addImpact(builder::shares(given, anyCard()));
            return Money::fromRubles(given[0].second) + Money::fromRubles(given[1].second);
        }
        }
    }

    void expectSumsAgree()
    {
        Money ofLines;
        for (const auto items = m_check->getGoodsItems(); const auto &item : items) {
            ofLines += item->getDiscountSum();
            EXPECT_GE(item->getTotal(), Money());
            EXPECT_EQ(Money::fromRubles(item->getDiscountApplyLimit(false)), item->getTotal());
        }
        EXPECT_EQ(ofLines, m_check->getDiscountSum());
        for (const auto impacts = m_check->getDiscountImpacts(); const auto &impact : impacts) {
            Money ofShares;
            for (const auto details = impact->getDetails(); const auto &share : details)
                ofShares += Money::fromRubles(share->getDiscountSum());
            EXPECT_EQ(ofShares, Money::fromRubles(impact->getTotals()->getDiscountSum()));
            EXPECT_TRUE(!impact->getCardRecord() || m_check->getCardRecords().contains(impact->getCardRecord()));
        }
    }

    std::mt19937 m_random;
    QSharedPointer<SaleDocument> m_check = QSharedPointer<SaleDocument>::create();
};

TEST(SaleDocumentSums, DiscountsOfLinesAddUpAfterAnySequenceOfOperations)
{
    int refused = 0;
    for (const unsigned seed : {1U, 2U, 3U, std::random_device()(), std::random_device()()}) {
        SCOPED_TRACE(seed);
        Cashier cashier(seed);
        for (int i = 0; i < 250 && !testing::Test::HasFailure(); ++i)
            cashier.act();
        refused += cashier.refused;
    }
    EXPECT_GT(refused, 0) << "no operation was ever refused: the sequences try too little";
}

TEST(SaleDocumentSums, DistributesOverLinesInProportionToWhatDiscountsMayTake)
{
    const auto check = builder::check({10000, 5000, 5000});
    check->findGoodsItem(3)->setAllowDiscount(false);
    check->addImpact(builder::shares({{1, 50.00}}));
    check->addImpact(builder::discount(33.33));
    const auto onPosition = builder::discount(5);
    onPosition->getTotals()->setDiscountObject(EDiscountObject::Position);
    onPosition->getTotals()->setPosition(2);
    check->addImpact(onPosition);
    EXPECT_EQ(check->findGoodsItem(1)->getTotal().kopecks(), 5000 - 1667);
    EXPECT_EQ(check->findGoodsItem(2)->getTotal().kopecks(), 5000 - 1666 - 500);
    EXPECT_EQ(check->findGoodsItem(3)->getTotal().kopecks(), 5000);
}

TEST(SaleDocumentSums, TakesSharesToTheNearestKopeckAndLeavesTheRateAsItWas)
{
    const auto check = builder::check({10000, 10000});
    const auto impact = builder::shares({{1, 0.0051}, {2, 1.005}});
    impact->getTotals()->setDiscountRate(1.0101);
    EXPECT_EQ(impact->getDetails().first()->getDiscountSum(), 0.0051);
    check->addImpact(impact);
    check->addImpact(impact); // Once is enough.
    EXPECT_EQ(check->findGoodsItem(1)->getDiscountSum().kopecks(), 1);
    EXPECT_EQ(check->findGoodsItem(2)->getDiscountSum().kopecks(), 101);
    EXPECT_EQ(impact->getTotals()->getDiscountSum(), 1.02);
    EXPECT_EQ(impact->getTotals()->getDiscountRate(), 1.0101);
}

TEST(SaleDocumentSums, RefusesDiscountsThatDoNotFit)
{
    struct
    {
        const char *label;
        QList<QPair<int, double>> shares;
        bool minPriceIgnored;
        bool fits;
    } const cases[] = {
        {"all of a line", {{1, 100.00}}, true, true},
        {"a kopeck more", {{1, 100.01}}, true, false},
        {"two shares that are too much together", {{1, 60.00}, {1, 40.01}}, true, false},
        {"down to the minimum price", {{1, 60.00}}, false, true},
        {"below the minimum price", {{1, 60.01}}, false, false},
        {"no such line", {{7, 1.00}}, true, false},
        {"the whole check as a position", {{0, 1.00}}, true, false},
        {"a line without discounts", {{2, 0.01}}, true, false},
        {"a negative share", {{1, 10.00}, {1, -1.00}}, true, false},
    };
    for (const auto &[label, given, minPriceIgnored, fits] : cases) {
        SCOPED_TRACE(label);
        SaleDocument check;
        check.addGoodsItem(builder::line(5000, 2, 2000));
        check.addGoodsItem(builder::line(5000));
        check.findGoodsItem(2)->setAllowDiscount(false);
        const auto impact = builder::shares(given);
        for (const auto details = impact->getDetails(); const auto &share : details)
            share->setMinPriceIgnored(minPriceIgnored);
        if (fits) {
            EXPECT_NO_THROW(check.addImpact(impact));
        } else {
            EXPECT_THROW(check.addImpact(impact), BasicException);
        }
        EXPECT_EQ(check.getDiscountImpacts().size(), fits ? 1 : 0);
    }
}

TEST(SaleDocumentSums, RemovesACardWithItsImpactsOnly)
{
    const auto check = builder::check({10000});
    const auto mine = builder::card(QStringLiteral("1"));
    const auto other = builder::card(QStringLiteral("2"));
    check->addCard(mine);
    check->addCard(other);
    check->addImpact(builder::discount(1, mine));
    check->addImpact(builder::discount(2, other));
    check->addImpact(builder::discount(4));
    check->removeCard(mine);
    EXPECT_EQ(check->getDiscountSum().kopecks(), 600);
    check->removeCard(mine);
    check->removeCard({});
    EXPECT_EQ(check->getCardRecords(), QList{other});
}

TEST(SaleDocumentSums, NeverGivesAPositionNumberTwice)
{
    const auto check = builder::check({100, 200});
    check->removeGoodsItem(2);
    const auto restored = SaleDocument::fromMap(check->toMap());
    EXPECT_EQ(restored->addGoodsItem(builder::line(300)), 3);
}

TEST(GoodsItemSum, IsPriceTimesQuantityToTheKopeck)
{
    struct
    {
        qint64 price;
        double quantity;
        qint64 sum;
    } const cases[] = {{100, 1.005, 101}, {10000, 0.335, 3350}, {199, 3, 597}, {333, 0.5, 167}, {1, 0.001, 0}};
    for (const auto &[price, quantity, sum] : cases)
        EXPECT_EQ(builder::line(price, quantity)->getSum().kopecks(), sum) << price << " x " << quantity;
}

TEST(SaleDocumentSums, RefusesLinesThatCannotBeSold)
{
    SaleDocument check;
    EXPECT_THROW(check.addGoodsItem(builder::line(100, 0)), BasicException);
    EXPECT_THROW(check.addGoodsItem(builder::line(100, std::nan(""))), BasicException);
    EXPECT_THROW(check.addGoodsItem(builder::line(-100)), BasicException);
    EXPECT_TRUE(check.getGoodsItems().isEmpty());
}

} // namespace
