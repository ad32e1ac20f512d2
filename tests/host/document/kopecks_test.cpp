// Sums of a check: whatever is done to it, the discounts of its lines add up to its own, to the kopeck.
#include "tests/support/checkbuilder.h"
#include "tests/support/test.h"

#include <core/basicexception.h>

#include <cmath>
#include <random>

namespace {

/// A check under random operations.
class RandomCheck
{
public:
    explicit RandomCheck(unsigned seed) : m_random(seed) {}

    /// Does one operation; the discount that it has put on the check.
    Money act()
    {
        const int position = upTo(check->getGoodsItems().isEmpty() ? 1 : check->getGoodsItems().last()->getPosnum());
        const auto card = check->getCardRecords().value(upTo(3));
        const int operation = upTo(7);
        Money added;
        if (operation == 0) {
            const auto item = builder::line(upTo(30000), 1 + upTo(3000) / 1000.0, upTo(100));
            item->setAllowDiscount(upTo(4) > 0);
            check->addGoodsItem(item);
        } else if (operation == 1) {
            check->changeGoodsItem(position, upTo(3000) / 1000.0, Money::fromKopecks(upTo(30000)));
        } else if (operation == 2) {
            check->removeGoodsItem(position);
        } else if (operation == 3) {
            check->addCard(builder::card(QString()));
        } else if (operation == 4) {
            check->removeCard(card);
        } else if (operation == 5) {
            EXPECT_NO_THROW(check = builder::restored(*check));
        } else if (operation == 6) {
            const auto impact = builder::discount(upTo(2000000) / 10000.0, card);
            impact->getTotals()->setMinPriceIgnored(upTo(1) == 0);
            added = Money::fromRubles(impact->getTotals()->getDiscountSum());
            check->addImpact(impact);
        } else { // Shares of fractions of a kopeck, and now and then two of them on one line.
            const double first = upTo(100000) / 7000.0, second = upTo(999) / 7000.0;
            added = Money::fromRubles(first) + Money::fromRubles(second);
            check->addImpact(builder::shares({{position, first}, {upTo(1) ? position : 1, second}}, card));
        }
        return added;
    }

    void expectSumsAgree() const
    {
        Money ofLines;
        for (const auto items = check->getGoodsItems(); const auto &item : items) {
            ofLines += item->getDiscountSum();
            EXPECT_GE(item->getTotal(), Money());
            EXPECT_EQ(Money::fromRubles(item->getDiscountApplyLimit(false)), item->getTotal());
        }
        EXPECT_EQ(ofLines, check->getDiscountSum());
        for (const auto impacts = check->getDiscountImpacts(); const auto &impact : impacts) {
            Money ofShares;
            for (const auto details = impact->getDetails(); const auto &share : details)
                ofShares += Money::fromRubles(share->getDiscountSum());
            EXPECT_EQ(ofShares, Money::fromRubles(impact->getTotals()->getDiscountSum()));
            EXPECT_TRUE(!impact->getCardRecord() || check->getCardRecords().contains(impact->getCardRecord()));
        }
    }

    QSharedPointer<SaleDocument> check = QSharedPointer<SaleDocument>::create();

private:
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }

    std::mt19937 m_random;
};

TEST(SaleDocumentSums, DiscountsOfLinesAddUpAfterAnySequenceOfOperations)
{
    int refused = 0;
    for (const unsigned seed : {1U, 2U, 3U, std::random_device()(), std::random_device()()}) {
        SCOPED_TRACE(seed);
        RandomCheck random(seed);
        for (int i = 0; i < 250 && !testing::Test::HasFailure(); ++i) {
            const QByteArray before = builder::text(*random.check);
            const Money sumBefore = random.check->getDiscountSum();
            try {
                const Money added = random.act();
                EXPECT_TRUE(added.isZero() || random.check->getDiscountSum() == sumBefore + added);
            } catch (const BasicException &) {
                EXPECT_EQ(builder::text(*random.check), before) << "a refused operation has changed the check";
                ++refused;
            }
            random.expectSumsAgree();
        }
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
    EXPECT_EQ(check->findGoodsItem(1)->getTotal().kopecks(), 5000 - 1666);
    EXPECT_EQ(check->findGoodsItem(2)->getTotal().kopecks(), 5000 - 1667 - 500);
    EXPECT_EQ(check->findGoodsItem(3)->getTotal().kopecks(), 5000);
}

TEST(SaleDocumentSums, TakesSharesToTheNearestKopeckAndLeavesTheRateAsItWas)
{
    const auto check = builder::check({10000, 10000});
    const auto impact = builder::shares({{1, 0.0051}, {2, 1.005}});
    impact->getTotals()->setDiscountRate(1.0101);
    check->addImpact(impact);
    check->addImpact(impact); // Once is enough.
    EXPECT_EQ(check->findGoodsItem(1)->getDiscountSum().kopecks(), 1);
    EXPECT_EQ(check->findGoodsItem(2)->getDiscountSum().kopecks(), 101);
    EXPECT_EQ(impact->getDetails().first()->getDiscountSum(), 0.01);
    EXPECT_EQ(impact->getTotals()->getDiscountSum(), 1.02);
    EXPECT_EQ(impact->getTotals()->getDiscountRate(), 1.0101);
}

TEST(SaleDocumentSums, RefusesDiscountsThatDoNotFit)
{
    const std::tuple<const char *, QList<QPair<int, double>>, bool, bool> cases[] = {
        {"all of a line", {{1, 100.00}}, true, true},
        {"two shares that are too much together", {{1, 60.00}, {1, 40.01}}, true, false},
        {"down to the minimum price", {{1, 60.00}}, false, true},
        {"below the minimum price", {{1, 60.01}}, false, false},
        {"no such line", {{7, 1.00}}, true, false},
        {"a line without discounts", {{2, 0.01}}, true, false},
        {"a negative share", {{1, 10.00}, {1, -1.00}}, true, false},
        {"more than money can be", {{1, 9e16}}, true, false},
        {"no number", {{1, std::nan("")}}, true, false},
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
        const auto refused = testing::Throws<BasicException>();
        EXPECT_THAT([&] { check.addImpact(impact); }, testing::Conditional(fits, testing::Not(refused), refused));
        EXPECT_EQ(check.getDiscountImpacts().size(), fits ? 1 : 0);
    }
}

TEST(SaleDocumentSums, TakesPointsOffAsOftenAsTheServiceCountsThem)
{
    const auto check = builder::check(QList<qint64>(10'000, 100));
    const auto spend = [](SaleDocument &on, int first, int last) {
        for (int position = first; position <= last; ++position) {
            const auto points = builder::shares({{position, 0.006}});
            points->getTotals()->setDiscountType(EDiscountType::Bonus);
            on.addImpact(points);
        }
    };
    spend(*check, 1, 333);
    EXPECT_EQ(check->getDiscountSum().kopecks(), 200); // 199.8
    check->removeGoodsItem(333);                       // counts from the beginning
    check->putBackGoodsItem(builder::check(QList<qint64>(333, 100))->getGoodsItems().last());
    spend(*check, 333, 333);
    EXPECT_EQ(check->getDiscountSum().kopecks(), 200);
    const auto restored = builder::restored(*check);
    spend(*restored, 334, 10'000);
    EXPECT_EQ(restored->getDiscountSum().kopecks(), 6000);
    for (const auto items = restored->getGoodsItems(); const auto &item : items)
        ASSERT_LE(item->getDiscountSum().kopecks(), 1);
}

TEST(DocumentCardRecordPoints, AreRefusedUnlessMoneyCanHoldThem)
{
    DocumentCardRecord card;
    for (const double points : {qInf(), std::nan(""), 8.9e16, -500.0}) {
        EXPECT_THROW(card.setPointsForSpend(points), BasicException) << points;
        EXPECT_THROW(card.setPointsForEarn(points), BasicException) << points;
        EXPECT_EQ(testing::Value([&] { card.setBonusBalance(points); }, testing::Throws<BasicException>()),
                  points != -500.0);
    }
    EXPECT_EQ(card.getBonusBalance(), -500.0);
    EXPECT_TRUE(card.getPointsForEarn().isNull());
}

TEST(SaleDocumentSums, RemovesACardWithItsImpactsOnly)
{
    const auto check = builder::check({10000});
    const auto mine = builder::card({}), other = builder::card({});
    for (const auto &card : {mine, other}) {
        check->addCard(card);
        check->addImpact(builder::discount(1, card));
    }
    check->addImpact(builder::discount(4));
    const auto byNumber = builder::discount(16); // as a loyalty system brings it back, without the record itself
    byNumber->getTotals()->setCardIndex(mine->getCodeInternal());
    check->addImpact(byNumber);
    check->addCard(mine); // is there already
    check->removeImpactsOf(nullptr);
    check->removeCard(nullptr);
    check->removeCard(mine);
    EXPECT_EQ(check->getDiscountSum().kopecks(), 500);
    EXPECT_EQ(check->findGoodsItem(1)->getDiscountSum().kopecks(), 500);
    EXPECT_EQ(check->getCardRecords(), QList{other});
    EXPECT_EQ(other->getCodeInternal(), 2);
    EXPECT_EQ(check->getDiscountImpacts().first()->getTotals()->getCardIndex(), 2);
}

TEST(GoodsItemSum, IsPriceTimesQuantityToTheKopeck)
{
    const std::tuple<qint64, double, qint64> cases[] = {
        {100, 1.005, 101}, {10000, 0.335, 3350}, {199, 3, 597}, {333, 0.5, 167}, {1, 0.001, 0}};
    for (const auto &[price, quantity, sum] : cases)
        EXPECT_EQ(builder::line(price, quantity)->getSum().kopecks(), sum) << price << " x " << quantity;
}

TEST(SaleDocumentLines, AreRefusedUnlessTheyCanBeSold)
{
    const std::tuple<double, qint64, bool> cases[] = {{1'000'000, 100'000'000, true},
                                                      {1'000'000, 100'000'001, false},
                                                      {1'000'001, 1, false},
                                                      {0, 1, false},
                                                      {std::nan(""), 1, false},
                                                      {1, 0, true},
                                                      {1, -1, false}};
    for (const auto &[quantity, kopecks, isSold] : cases) {
        SCOPED_TRACE(testing::Message() << quantity << " x " << kopecks);
        const auto check = builder::check({100, 200});
        const auto removed = builder::line(kopecks, quantity);
        removed->setPosnum(2);
        check->removeGoodsItem(2);
        const std::function<void()> operations[] = {
            [&, price = kopecks, number = quantity] { check->changeGoodsItem(1, number, Money::fromKopecks(price)); },
            [&] { check->putBackGoodsItem(removed); },
            [&, price = kopecks, number = quantity] { check->addGoodsItem(builder::line(price, number)); }};
        for (const auto &operation : operations)
            EXPECT_EQ(!testing::Value(operation, testing::Throws<BasicException>()), isSold);
        EXPECT_EQ(check->getGoodsItems().size(), isSold ? 3 : 1);
    }
}

TEST(SaleDocumentLines, AreChangedRemovedAndPutBackByTheirNumber)
{
    const auto check = builder::check({100, 200, 300});
    const auto second = check->findGoodsItem(2);
    check->addImpact(builder::shares({{1, 0.50}, {2, 1.00}}));
    check->addImpact(builder::shares({{2, 0.50}}));
    check->changeGoodsItem(2, 3, Money::fromKopecks(50)); // exactly its discounts
    EXPECT_EQ(second->getTotal(), Money());
    EXPECT_THROW(check->changeGoodsItem(2, 1, Money::fromKopecks(149)), BasicException);
    EXPECT_THROW(check->changeGoodsItem(4, 1, Money()), BasicException);
    EXPECT_THROW(check->removeGoodsItem(4), BasicException);
    check->removeGoodsItem(2);
    EXPECT_EQ(check->getDiscountImpacts().size(), 1) << "the other one has no share left";
    EXPECT_EQ(check->getDiscountSum().kopecks(), 50);
    EXPECT_EQ(check->getTotal().kopecks(), 350);
    EXPECT_FALSE(check->findGoodsItem(2));

    check->putBackGoodsItem(second);
    EXPECT_EQ(check->getGoodsItems().at(1), second);
    EXPECT_EQ(second->getDiscountSum(), Money());
    const auto restored = builder::restored(*check);
    for (const int posnum : {0, 2, 4}) {
        const auto item = builder::line(100);
        item->setPosnum(posnum);
        EXPECT_THROW(restored->putBackGoodsItem(item), BasicException) << posnum;
    }
    restored->removeGoodsItem(3);
    EXPECT_EQ(restored->addGoodsItem(builder::line(300)), 4) << "no number is given twice";
    restored->removeGoodsItem(1);
    const auto first = GoodsItem::fromMap(check->findGoodsItem(1)->toMap());
    restored->putBackGoodsItem(first);
    EXPECT_EQ(restored->getGoodsItems().first(), first);
}

} // namespace
