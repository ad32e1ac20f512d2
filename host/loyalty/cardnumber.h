// What the cashier entered to find a card, and the card that was found.
#pragma once

#include <core/tr.h>
#include <loyalty/ecardnumbertype.h>

namespace loyalty {

struct CardNumberInputData
{
    int type = static_cast<int>(ECardNumberType::Manual); ///< An ECardNumberType.
    QString text;                                         ///< What was typed or scanned.
};

struct CardNumberResult
{
    bool success = false;
    QString cardNumber; ///< Empty on failure, and when the search has found nobody.
    tr::Tr error;       ///< For the cashier; empty on success.
};

} // namespace loyalty
