// The judgement: what the till has sold against what the service has booked. It reads both sides' own words, and does
// its own sums.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace prove {

/// What was found. All but the counts of sales must be 0 and empty.
struct Books
{
    int closed = 0;
    int closedWithCard = 0;
    int voided = 0;

    int lost = 0;         ///< Closed checks with a card whose order is not posted and bound to them.
    int doubled = 0;      ///< Bookings beyond the one of a closed check.
    int different = 0;    ///< Booked, but with another card, other lines or other points.
    int leftOpen = 0;     ///< Orders that are neither sold nor cancelled.
    int unbalanced = 0;   ///< Customers whose balance is not what the sales have made of it.
    QStringList findings; ///< A sentence for each of them.

    int sales() const { return closed + voided; }
    bool isGood() const { return findings.isEmpty(); }
};

/// `journal`: the till's lines, one for each finished check. `ledger`: what `loyalty-sim ledger --json` prints. Throws
/// std::runtime_error for a number that is none.
Books judge(const QList<QJsonObject> &journal, const QJsonObject &ledger);

} // namespace prove
