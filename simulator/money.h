// The service's sums: whole kopecks and whole hundredths of a point. One point is worth one ruble, so no rate is
// needed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

using Kopecks = std::int64_t; // 1/100 ruble
using Points = std::int64_t;  // 1/100 point

/// Reads "91.00": at most 12 digits, a dot, exactly two decimals, no sign. Empty for any other text.
std::optional<Kopecks> parseHundredths(std::string_view text);

/// Writes 9100 as "91.00" and -5 as "-0.05".
std::string formatHundredths(std::int64_t value);

/// The JSON number of an amount: 243 gives 2.43.
double toNumber(Points value);

} // namespace sim
