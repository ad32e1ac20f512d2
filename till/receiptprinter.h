// Prints receipts once the service has had a moment to accept what the check has sent.
#pragma once

#include "checkresult.h"

#include <queue/queuedrain.h>

namespace till {

/// Prints the receipt. The drain gets up to two seconds before, where the check has an order, so that only what could
/// not be sent at once is shown as waiting.
void printReceipt(const CheckResult &result, QueueDrain &drain);

} // namespace till
