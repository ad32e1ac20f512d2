// The judge must bite: each case spoils books that agree, and has to be found.
#include "books.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

/// One sale of 100.00 with 10.00 points spent and 4.50 earned, and one voided check.
const QByteArray goodJournal = R"([
    {"check": "A", "outcome": "closed", "card": "7", "basket": "b1", "spent": "10.00", "earned": "4.50",
     "lines": [{"lineId": 1, "amount": "100.00", "spent": "10.00"}]},
    {"check": "B", "outcome": "voided", "card": "7", "basket": "b2", "spent": "0.00", "earned": "1.00", "lines": []}])";

const QByteArray goodLedger = R"({
    "customers": [{"CustAccount": "C", "Cards": ["7"], "Balance": "94.50"}],
    "orders": [{"basket": "b1", "card": "7", "state": "bound", "orderId": "A", "points": "10.00", "earned": "4.50",
                "lines": [{"lineId": 1, "amount": "100.00", "points": "10.00"}]},
               {"basket": "b2", "card": "7", "state": "cancelled", "orderId": "", "points": "0.00", "earned": "0.00",
                "lines": []}],
    "movements": [{"account": "C", "basket": "", "kind": "opening", "points": "100.00"},
                  {"account": "C", "basket": "b1", "kind": "reserve", "points": "-10.00"},
                  {"account": "C", "basket": "b1", "kind": "release", "points": "10.00"},
                  {"account": "C", "basket": "b1", "kind": "spend", "points": "-10.00"},
                  {"account": "C", "basket": "b1", "kind": "earn", "points": "4.50"}]})";

struct Case
{
    const char *name;
    const char *before; ///< In the journal or the ledger,
    const char *after;  ///< replaced by this.
    int prove::Books::*figure;
};

using prove::Books;
const Case cases[]{
    {"NotBound", R"("state": "bound")", R"("state": "posted")", &Books::lost},
    {"BoundToAnotherCheck", R"("orderId": "A")", R"("orderId": "X")", &Books::lost},
    {"NoOrder", R"({"basket": "b1", "card")", R"({"basket": "b3", "card")", &Books::lost},
    {"BookedForAVoidedCheck", R"("state": "cancelled")", R"("state": "bound")", &Books::doubled},
    {"EarnedTwice", R"({"account": "C", "basket": "", "kind")",
     R"({"account": "C", "basket": "b1", "kind": "earn", "points": "4.50"}, {"account": "C", "kind")", &Books::doubled},
    {"CheckTwiceInTheJournal", R"({"check": "B")", R"({"check": "A")", &Books::doubled},
    {"OtherLine", R"("lineId": 1, "amount": "100.00", "points")", R"("lineId": 2, "amount": "100.00", "points")",
     &Books::different},
    {"OtherPointsEarned", R"("points": "10.00", "earned": "4.50")", R"("points": "10.00", "earned": "4.51")",
     &Books::different},
    {"LeftOpen", R"("state": "cancelled")", R"("state": "created")", &Books::leftOpen},
    {"OtherBalance", R"("Balance": "94.50")", R"("Balance": "94.51")", &Books::unbalanced},
};

Books judge(const QByteArray &journal, const QByteArray &ledger)
{
    QList<QJsonObject> checks;
    for (const QJsonValue check : QJsonDocument::fromJson(journal).array())
        checks.append(check.toObject());
    return prove::judge(checks, QJsonDocument::fromJson(ledger).object());
}

TEST(ProofBooks, AreGoodWhenBothSidesAgree)
{
    const Books books = judge(goodJournal, goodLedger);
    EXPECT_TRUE(books.isGood()) << books.findings.join(u'\n').toStdString();
    EXPECT_EQ(books.closedWithCard, 1);
    EXPECT_EQ(books.voided, 1);
}

class SpoiltBooks : public testing::TestWithParam<Case>
{
};

TEST_P(SpoiltBooks, AreFoundOut)
{
    const auto &[name, before, after, figure] = GetParam();
    QByteArray journal = goodJournal;
    QByteArray ledger = goodLedger;
    journal.replace(before, after);
    ledger.replace(before, after);
    ASSERT_TRUE(journal != goodJournal || ledger != goodLedger);
    const Books books = judge(journal, ledger);
    EXPECT_EQ(books.*figure, 1) << books.findings.join(u'\n').toStdString();
    EXPECT_FALSE(books.isGood());
}

INSTANTIATE_TEST_SUITE_P(By, SpoiltBooks, testing::ValuesIn(cases),
                         [](const auto &instance) { return std::string(instance.param.name); });

} // namespace
