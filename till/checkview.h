// The open check as the cashier sees it in a terminal, and what it waits for.
#pragma once

#include "checkresult.h"
#include "tillstate.h"

#include <checks/checkstore.h>

namespace till {

/// Characters of a reason that are shown.
constexpr qsizetype longestReason = 300;

/// "3" or "0.345": no more decimals than there are.
QString quantityText(double quantity);

/// All but the last four characters hidden.
QString maskedCard(const QString &card);

/// The lines with their numbers, the card masked, the sums and the points.
QString checkView(const CheckResult &result);

/// What has to happen before the check can end.
QString waitingFor(const TillState &state);

/// Checks that are not the current one, numbered as `take` counts them, with the reasons.
QString keptChecksView(const QList<CheckStore::KeptCheck> &checks);

/// How to go on with an open check, for the given configuration file.
QString waysToGoOn(const QString &configFile);

} // namespace till
