// What a discount applies to. The numbers are part of the host's contract.
#pragma once

enum class EDiscountObject : int { Check = 0, Position = 1, Last = Position };
