// What the cashier entered to find a card. The number of Phone is part of the host's contract.
#pragma once

enum class ECardNumberType : int {
    Manual = 0, ///< A card number typed in.
    Phone = 1,  ///< The customer's telephone number.
    Scanned = 2 ///< A card number read from a barcode or a stripe.
};
