// Who put an impact on the check. The numbers are part of the host's contract.
#pragma once

enum class EImpactSource : int { Undefined = 0, DiscountSystem = 1, LoyaltySystem = 2, Cashier = 3, Last = Cashier };
