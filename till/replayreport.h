// What a replay prints at its end.
#pragma once

#include "replaytills.h"

namespace till {

/// Lines that were not sold, one each: bad ones, returns, cancelled invoices, with their totals.
QString leftOutText(const Day &day);

/// What was sold beside what the file has, the receipts that were not, and every message to the cashier.
QString soldText(const Day &day, const ReplayTills &tills);

/// A table of the operations: how many, and percentiles of their milliseconds.
QString timesText(const QList<ReplayedReceipt> &replayed);

/// Whether every receipt was sold and no cashier was shown anything.
bool isFlawless(const ReplayTills &tills);

} // namespace till
