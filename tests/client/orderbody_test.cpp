// The order body: how goods, discounts and payments are told to the service.
#include "client/interface.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/commalocale.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

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

    void addImpact(const QList<QPair<int, double>> &shares, EDiscountType type,
                   EDiscountMode mode = EDiscountMode::LoyaltySystem, const QVariant &valutCode = {})
    {
        const auto impact = builder::shares(shares);
        impact->getTotals()->setDiscountType(type);
        impact->getTotals()->setDiscountMode(mode);
        impact->getTotals()->setValutCode(valutCode);
        document->addImpact(impact);
    }

    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s}, {u"Kvo:onlineStore"_s, u"S"_s}, {u"Kvo:terminal"_s, u"T"_s}}};
    Interface client;
    QSharedPointer<SaleDocument> document = builder::check({10000, 5000});
    QSharedPointer<DocumentCardRecord> card = builder::card(u"2000"_s);
};

} // namespace

TEST_F(OrderBody, TellsThePlainCheck)
{
    card->setOperationId(u"basket-1"_s);
    const auto item = builder::line(3333, 3);
    item->setAdditionalBarcode(u"460"_s);
    item->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    document->addGoodsItem(item);
    document->removeGoodsItem(1);
    document->removeGoodsItem(2);

    QJsonObject expected = json(R"({
        "brand": "B", "cardNumber": "2000", "onlineStore": "S", "basket": "basket-1",
        "orderLines": [{"barcode": "460", "lineID": "3", "qty": "1", "lineAmount": "99.99", "isSale": true,
                        "noDiscountAllowed": false, "noEarnAllowed": false, "paymentDiscAmount": "0.00"}],
        "paymentDiscAmount": "0.00", "terminal": "T"})");
    expected.insert("basketDatetime"_L1, document->getDateTime().date().toString(Qt::ISODate));
    const CommaLocale commas;
    EXPECT_EQ(client.createOrderBody(document, card, false), expected);
}

TEST_F(OrderBody, FoldsImpactsByKind)
{
    addImpact({{1, 10}, {2, 1}}, EDiscountType::Bonus);
    addImpact({{1, 5}}, EDiscountType::Sum, EDiscountMode::Payment);
    addImpact({{1, 0.25}}, EDiscountType::Bonus, EDiscountMode::Manual, u"643"_s);
    addImpact({{1, 7}}, EDiscountType::Percent, EDiscountMode::Manual);
    addImpact({{2, 2}}, EDiscountType::None, EDiscountMode::Payment);
    EXPECT_EQ(client.createOrderBody(document, card, false).value("paymentDiscAmount"_L1), u"7.25"_s);
    EXPECT_EQ(line().value("lineAmount"_L1), u"93.00"_s);
    EXPECT_EQ(line().value("paymentDiscAmount"_L1), u"5.25"_s);
    EXPECT_EQ(line(false, 1).value("lineAmount"_L1), u"50.00"_s);
    EXPECT_EQ(line(false, 1).value("paymentDiscAmount"_L1), u"2.00"_s);
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
        const auto item = document->getGoodsItems().first();
        item->setCampaignLabels(c.labels);
        item->setAllowDiscount(c.allowDiscount);
        item->setAllowBonusEarn(c.allowEarn);
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(line(c.forbid).value("noDiscountAllowed"_L1), c.noDiscount);
        EXPECT_EQ(line(c.forbid).value("noEarnAllowed"_L1), c.noEarn);
    }
}

} // namespace kvo
