// The order body: how goods, discounts and payments are told to the service.
#include "client/interface.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/fakedocument.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <QtCore/QLocale>

#include <clocale>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

class OrderBody : public testing::Test
{
protected:
    QJsonObject line(bool forbidDiscount = false, int index = 0) const
    {
        return client.createOrderBody(document, card, forbidDiscount).value("orderLines"_L1)[index].toObject();
    }

    /// Puts an impact on the check; `shares` are position and sum.
    void addImpact(const QList<std::pair<int, double>> &shares, EDiscountType type,
                   EDiscountMode mode = EDiscountMode::LoyaltySystem, const QVariant &valutCode = {})
    {
        auto totals = QSharedPointer<DocumentImpactDetail>::create();
        totals->setDiscountType(type);
        totals->setDiscountMode(mode);
        totals->setValutCode(valutCode);
        auto impact = QSharedPointer<DocumentImpact>::create(totals);
        double sum = 0;
        for (const auto &[position, share] : shares) {
            impact->addDetailForPosition(position, share);
            sum += share;
        }
        totals->setDiscountSum(sum);
        document->impacts.append(impact);
    }

    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s}, {u"Kvo:onlineStore"_s, u"S"_s}, {u"Kvo:terminal"_s, u"T"_s}}};
    Interface client;
    QSharedPointer<FakeDocument> document = QSharedPointer<FakeDocument>::create();
    QSharedPointer<DocumentCardRecord> card = QSharedPointer<DocumentCardRecord>::create();
};

} // namespace

TEST_F(OrderBody, TellsThePlainCheck)
{
    card->setNumber(u"2000"_s);
    card->setOperationId(u"basket-1"_s);
    auto item = makeGoodsItem(3, 33.33, 3);
    item->setAdditionalBarcode(u"460"_s);
    item->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    document->goods = {item};

    const QJsonObject expected = json(R"({
        "brand": "B", "cardNumber": "2000", "onlineStore": "S", "basket": "basket-1", "basketDatetime": "2026-03-09",
        "orderLines": [{"barcode": "460", "lineID": "3", "qty": "1", "lineAmount": "99.99", "isSale": true,
                        "noDiscountAllowed": false, "noEarnAllowed": false, "paymentDiscAmount": "0.00"}],
        "paymentDiscAmount": "0.00", "terminal": "T"})");
    EXPECT_EQ(client.createOrderBody(document, card, false), expected);

    // Numbers must not follow the till's locale.
    QLocale::setDefault(QLocale(QLocale::Russian));
    std::setlocale(LC_ALL, "ru_RU.UTF-8");
    EXPECT_EQ(client.createOrderBody(document, card, false), expected);
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_ALL, "C");
}

TEST_F(OrderBody, FoldsImpactsByKind)
{
    auto first = makeGoodsItem(1, 100);
    first->setDiscountSum(Money::fromRubles(30));
    document->goods = {first, makeGoodsItem(2, 50)};
    addImpact({{1, 10}, {2, 1}}, EDiscountType::Bonus);
    addImpact({{1, 5}}, EDiscountType::Sum, EDiscountMode::Payment);
    addImpact({{1, 0.25}}, EDiscountType::Bonus, EDiscountMode::Manual, u"643"_s);
    addImpact({{1, 7}}, EDiscountType::Percent, EDiscountMode::Manual);
    addImpact({{9, 2}}, EDiscountType::None, EDiscountMode::Payment);

    const QJsonObject body = client.createOrderBody(document, card, false);

    EXPECT_EQ(body.value("paymentDiscAmount"_L1), u"7.25"_s);
    EXPECT_EQ(line().value("lineAmount"_L1), u"85.25"_s);
    EXPECT_EQ(line().value("paymentDiscAmount"_L1), u"5.25"_s);
    EXPECT_EQ(line(false, 1).value("lineAmount"_L1), u"51.00"_s);
    EXPECT_EQ(line(false, 1).value("paymentDiscAmount"_L1), u"0.00"_s);
}

TEST_F(OrderBody, SaysWhatMayNotBeSpentAndEarned)
{
    const struct
    {
        QVariantList labels;
        bool allowDiscount, allowEarn, forbid, noDiscount, noEarn;
    } cases[] = {
        {{}, true, true, false, false, false},
        {{u"NOSPEND"_s}, true, true, false, true, false},
        {{u"NOBONUS"_s}, true, true, false, false, true},
        {{7, u"NOSPEND"_s, u"NOBONUS"_s}, true, true, false, true, true},
        {{u"nospend"_s, u"NOBONUS "_s}, true, true, false, false, false},
        {{}, false, true, false, true, false},
        {{}, true, false, false, false, true},
        {{}, true, true, true, true, false},
    };
    for (const auto &c : cases) {
        auto item = makeGoodsItem(1, 10);
        item->setCampaignLabels(c.labels);
        item->setAllowDiscount(c.allowDiscount);
        item->setAllowBonusEarn(c.allowEarn);
        document->goods = {item};
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(line(c.forbid).value("noDiscountAllowed"_L1), c.noDiscount);
        EXPECT_EQ(line(c.forbid).value("noEarnAllowed"_L1), c.noEarn);
    }
}

TEST_F(OrderBody, NamesANewOrderAnewEachTime)
{
    const auto basket = [this] { return client.createOrderBody(document, card, false).value("basket"_L1).toString(); };
    EXPECT_EQ(basket().size(), 36);
    EXPECT_NE(basket(), basket());
}

} // namespace kvo
