// Kinds of documents of a till. The numbers are part of the host's contract.
#pragma once

enum class EDocumentType : int {
    Sale = 1,
    Refund = 2,
    RefundBySale = 25 ///< A refund that names the sale it takes back; loyalty systems have nothing to confirm on it.
};
