// The receipt of a check, as text of a fixed width.
#pragma once

#include "checkresult.h"

#include <queue/queuestatus.h>

namespace till {

/// Characters in a line of the receipt.
constexpr int receiptWidth = 42;

/// The receipt in Russian, each line ended by a line break. Sums have two decimals and a point in every locale; widths
/// are counted in characters. `queue` tells what the service has not accepted yet: while there is something, the
/// balance after the sale is marked as expected.
QString receiptText(const CheckResult &result, const QueueStatus &queue);

} // namespace till
