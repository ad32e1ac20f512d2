// The judge must bite: each case spoils books that are good, and has to be found.
#include "books.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

/// One sale of 100.00 with 10.00 points spent and 4.50 earned, and one voided check.
const QByteArray goodBooks = R"({
    "journal": [{"check": "A", "outcome": "closed", "card": "7", "basket": "b1", "spent": "10.00", "earned": "4.50"},
                {"check": "B", "outcome": "voided", "card": "7", "basket": "b2", "spent": "0.00", "earned": "1.00"}],
    "customers": [{"CustAccount": "C", "Cards": ["7"], "Balance": "94.50"}],
    "orders": [{"basket": "b1", "state": "bound", "orderId": "A"}, {"basket": "b2", "state": "cancelled"}],
    "movements": [{"account": "C", "kind": "opening", "points": "100.00"},
                  {"account": "C", "kind": "spend", "points": "-10.00"}],
    "record": [{"method": "postOrder", "basket": "b1", "body": "1", "accepted": true},
               {"method": "calculateOrder", "basket": "b1", "body": "2", "accepted": true},
               {"method": "calculateOrder", "basket": "b1", "body": "2", "accepted": true}]})";

QList<QJsonObject> lines(const QJsonValue &array)
{
    QList<QJsonObject> objects;
    for (const QJsonValue entry : array.toArray())
        objects.append(entry.toObject());
    return objects;
}

/// All that is found, in one text.
std::string judge(const QByteArray &text)
{
    const QJsonObject all = QJsonDocument::fromJson(text).object();
    const prove::Traffic traffic = prove::count(lines(all[u"record"]));
    return prove::judge(lines(all[u"journal"]), all).findings.join(u'\n').toStdString() +
           (traffic.refused > 0 ? "refused" : "") + (traffic.repeats > 0 ? "repeated" : "");
}

TEST(ProofBooks, SpoiltAreFoundOut)
{
    EXPECT_EQ(judge(goodBooks), "");
    const struct
    {
        const char *before;
        const char *after;
        const char *finding;
    } cases[] = {
        {R"("orderId": "A")", R"("orderId": "B")", "check A has a card and 0 bound orders"},
        {R"("cancelled")", R"("bound", "orderId": "A")", "check A has a card and 2 bound orders"},
        {R"("check": "B")", R"("check": "A")", "check A is in the journal twice"},
        {R"("cancelled")", R"("created")", "order b2 is left created"},
        {R"("bound")", R"("posted")", "order b1 is left posted"},
        {R"("voided", "card")", R"("closed", "card")", "9450 hundredths of a point, by the sales it must be 9550"},
        {R"("94.50")", R"("94.51")", "9451 hundredths of a point, by the sales it must be 9450"},
        {R"("body": "1", "accepted": true)", R"("body": "1", "accepted": false)", "refused"},
        {R"("calculateOrder")", R"("bindOrderId")", "repeated"},
    };
    for (const auto &[before, after, finding] : cases)
        EXPECT_NE(judge(QByteArray(goodBooks).replace(before, after)).find(finding), std::string::npos) << finding;
}

} // namespace
