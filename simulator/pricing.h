// The rules for spending and earning points; README.md states them for people.
#pragma once

#include "money.h"
#include "wire.h"

#include <vector>

namespace sim {

/// The largest share of a line that can be paid with points, in percent of its amount less its payment discount.
inline constexpr int redeemPercent = 50;

/// What each line pays with points, in order, as long as `available` lasts; nothing for a line that allows no discount.
std::vector<Points> redeem(const std::vector<OrderLine> &lines, Points available);

/// What the order earns when its lines pay `spent` with points: `percent` of the money on lines that may earn, half
/// of that on sale lines, rounded down once for the order. `spent` has one entry per line.
Points earn(const std::vector<OrderLine> &lines, const std::vector<Points> &spent, int percent);

} // namespace sim
