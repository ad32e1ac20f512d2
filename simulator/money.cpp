// Converts sums to text and back, independently of the locale.
#include "money.h"

#include <cstdlib>

namespace sim {

namespace {
constexpr std::size_t maximumWholeDigits = 12;
constexpr std::size_t fractionLength = 3; // the dot and two digits
} // namespace

std::optional<Kopecks> parseHundredths(std::string_view text)
{
    if (text.size() <= fractionLength || text.size() > maximumWholeDigits + fractionLength ||
        text[text.size() - fractionLength] != '.')
        return std::nullopt;
    Kopecks value = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == text.size() - fractionLength)
            continue;
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

std::string formatHundredths(std::int64_t value)
{
    const std::int64_t size = std::abs(value);
    const std::string fraction = std::to_string(100 + size % 100).substr(1);
    return (value < 0 ? "-" : "") + std::to_string(size / 100) + "." + fraction;
}

double toNumber(Points value)
{
    return static_cast<double>(value) / 100.0;
}

} // namespace sim
