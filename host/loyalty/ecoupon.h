// Kinds of coupons that a loyalty system may answer for.
#pragma once

class ECoupon
{
public:
    enum Type : int { Unknown = 0, Discount = 1, Gift = 2 };
};
