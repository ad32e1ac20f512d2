// What a discount is made of. The numbers are part of the host's contract.
#pragma once

enum class EDiscountType : int {
    None = 0,
    Percent = 1,
    Sum = 2,
    FixedPrice = 3,
    Coupon = 4,
    Bonus = 5, ///< Loyalty points spent.
    Last = Bonus
};
