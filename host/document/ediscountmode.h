// How a discount came onto the check. The numbers are part of the host's contract.
#pragma once

enum class EDiscountMode : int {
    Undefined = 0,
    Automatic = 1,
    LoyaltySystem = 2,
    Manual = 3,
    Card = 4,
    Coupon = 5,
    Payment = 6, ///< A payment that is shown as a discount.
    Last = Payment
};
