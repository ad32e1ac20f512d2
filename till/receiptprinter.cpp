// Prints receipts on the terminal.
#include "receiptprinter.h"

#include "console.h"
#include "receipt.h"

#include <core/basicexception.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

namespace till {

std::optional<QueueStatus> queueStatus()
{
    try {
        return Singleton<DBQueueBroker>::instance()->status();
    } catch (const BasicException &) {
        return std::nullopt;
    }
}

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
