// Judges what both sides have recorded: the tills' journals, the service's orders, and the exchanges in between.
// Whether check and order agree line by line and balances add up, `loyalty-sim compare` and `loyalty-sim check` tell.
#pragma once

#include <QtCore/QJsonArray>
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

/// Finds sales without an order, and orders that are neither sold nor cancelled. `journal`: the tills' lines, one for
/// each finished check. `orders`: what `loyalty-sim ledger --json` prints of them.
Books judge(const QList<QJsonObject> &journal, const QJsonArray &orders);

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
