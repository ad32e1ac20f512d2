// Prints receipts on the terminal.
#include "receiptprinter.h"

#include "console.h"
#include "endingqueue.h"
#include "receipt.h"

namespace till {

void printReceipt(const CheckResult &result, QueueDrain &drain)
{
    constexpr std::chrono::seconds longestWait{2};
    if (!result.basket.isEmpty() && result.loyaltyOff.isEmpty()) {
        drain.wakeUp();
        std::ignore = drain.waitUntilDrained(longestWait);
    }
    console::print(receiptText(result, queueStatus().value_or(QueueStatus())));
}

} // namespace till
