// What the host tells its listeners about a check. The numbers are part of the host's contract.
#pragma once

enum class EventCode : int {
    SubtotalEntered = 24,      ///< The cashier has finished the goods and sees the subtotal.
    PositionChanged = 57,      ///< A line of a check that was already priced was added, changed or removed.
    PositionRestored = 237,    ///< The last change of a line was taken back; without one, the pricing is void.
    PaymentStarted = 238,      ///< The check's sum is final and payment begins.
    LoyaltyResultDropped = 239 ///< What the loyalty system had priced was taken off the check: price it again.
};
