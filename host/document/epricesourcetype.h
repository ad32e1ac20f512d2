// Where the price of an article came from. The numbers are part of the host's contract.
#pragma once

enum class EPriceSourceType : int {
    Undefined = 0,
    Catalogue = 1,
    Barcode = 2,
    Manual = 3,
    MinimumPrice = 4,
    Promotion = 5, ///< The article is on sale at a reduced price.
    Last = Promotion
};
