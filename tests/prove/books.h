// The judgement of what both sides have written down: the till's journal, the service's ledger, and the record of what
// went between them. That check and order agree line by line is the comparison's business, see `loyalty-sim compare`.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QStringList>

namespace prove {

struct Books
{
    int closed = 0;
    int closedWithCard = 0;
    int voided = 0;
    int lost = 0;         ///< Closed with a card, and no order is bound to them.
    int doubled = 0;      ///< Orders bound to them beyond the first.
    QStringList findings; ///< Sentences; empty when all is well.
};

/// Sales without an order, orders that are neither sold nor cancelled, and balances that the sales do not explain.
/// `journal`: the till's lines, one for each finished check. `ledger`: what `loyalty-sim ledger --json` prints.
Books judge(const QList<QJsonObject> &journal, const QJsonObject &ledger);

/// What went over the wire.
struct Traffic
{
    QMap<QString, int> faults; ///< By kind.
    int refused = 0;           ///< Requests about an order that the service itself would not accept.
    int repeats = 0;           ///< Deliveries of the very same booking beyond the first accepted one.
};

/// `record`: the fault proxy's lines.
Traffic count(const QList<QJsonObject> &record);

} // namespace prove
