// Abilities of a loyalty system that the host asks about. The numbers are part of the host's contract.
#pragma once

enum class LoyaltySystemOption : int {
    SpendPoints = 0x0001,          ///< Points can pay for a part of the check.
    EarnPoints = 0x0002,           ///< The check earns points.
    RequestAfterClose = 0x0004,    ///< The check is reported once more after it was closed.
    RequestPointsForSpend = 0x4000 ///< The host has the cashier enter how many points to spend.
};
