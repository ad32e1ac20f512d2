// The receipt's text, whatever the locale and whatever stands in names and numbers.
#include "tests/support/checkbuilder.h"
#include "tests/support/commalocale.h"
#include "tests/support/golden.h"
#include "till/checkview.h"
#include "till/journal.h"
#include "till/receipt.h"

namespace {

TEST(Receipt, IsLaidOutAlikeInEveryLocale)
{
    const CommaLocale locale;
    const QDateTime opened({2026, 3, 5}, {14, 3, 9});
    const auto check = QSharedPointer<SaleDocument>::create();
    check->addGoodsItem(builder::line(64000, 0.345));
    check->addGoodsItem(builder::line(1));
    check->addGoodsItem(builder::line(4550, 2));
    check->removeGoodsItem(2);
    const auto lines = check->getGoodsItems();
    lines[0]->getTmc()->setName(u"Сыр Российский\u2028особый весовой с длинным названием на ценнике"_s);
    lines[0]->setCampaignLabels({u"NOSPEND"_s});
    lines[1]->getTmc()->setName(u"Хлеб"_s);
    lines[1]->setCampaignLabels({u"NOBONUS"_s});
    const auto card = builder::card(u"\x1b[2J7770000000001\u202e"_s);
    card->getCard()->setClient(QSharedPointer<Client>::create());
    card->getCard()->getClient()->setName(u"Константинопольская-Преображенская\nАлександра Владимировна"_s);
    card->setOperationId(u"b-1"_s);
    card->setExtendedOptions(QVariantMap{{u"loyaltyStatus"_s, u"Золотая, с персональным менеджером"_s}});
    card->setBonusBalance(1234567.89);
    check->addCard(card);
    check->addImpact(builder::shares({{1, 110.4}}, card));
    check->getDiscountImpacts().last()->getTotals()->setDiscountType(EDiscountType::Bonus);
    check->addImpact(builder::shares({{3, 10}}));
    till::CheckResult result = till::resultOf(*check, card, 0.05);
    result.identifier = u"c0ffee00-0000-4000-8000-000000000001"_s;
    result.dateTime = opened;
    result.outcome = u"closed"_s;
    result.cashier = u"Петрова\nА. П."_s;
    EXPECT_TRUE(!result.lines[0].takesPoints && result.lines[0].earnsPoints);
    EXPECT_TRUE(result.lines[1].takesPoints && !result.lines[1].earnsPoints);
    QString text;
    const auto print = [&](const QueueStatus &queue) {
        const QJsonObject entry = result.toJournal();
        text += till::receiptText(till::resultFromJournal(entry), queue) + till::checkView(result) +
                till::journalText({{opened, entry}}, false);
    };
    print({2, 0, opened});
    result.isOffered = result.isPriced = true;
    result.offered = Money::fromKopecks(5000);
    print({});
    result.outcome = u"voided"_s;
    result.lines[0].spent = {};
    result.lines[1].name = QString(4 * till::receiptWidth, u'щ');
    print({0, 3, {}});
    result.outcome = u"open"_s;
    result.card.clear();
    result.loyaltyOff = u"нет\nсвязи"_s;
    text += till::receiptText(result, {}) + till::checkView(result) +
            till::journalText({{opened, result.toJournal()}}, false);
    using Standing = CheckStore::Standing;
    text += till::keptChecksView({{u"a"_s, Standing::Current, {}, opened},
                                  {u"b"_s, Standing::Parked, u"нет\nсвязи"_s.repeated(50), opened},
                                  {u"c"_s, Standing::Unreadable, {}, opened}});
    expectText(text, u"till/receipts.txt"_s);
}

} // namespace
