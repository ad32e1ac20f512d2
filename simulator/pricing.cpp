// Redeeming and earning; the rules are in the header and in README.md.
#include "pricing.h"

#include <algorithm>

namespace sim {

std::vector<Points> redeem(const std::vector<OrderLine> &lines, Points available)
{
    std::vector<Points> spent;
    for (const OrderLine &line : lines) {
        const Points limit = line.noDiscount ? 0 : (line.amount - line.paymentDiscount) * redeemPercent / 100;
        spent.push_back(std::min(limit, available));
        available -= spent.back();
    }
    return spent;
}

Points earn(const std::vector<OrderLine> &lines, const std::vector<Points> &spent, int percent)
{
    std::int64_t doubled = 0; // twice the sum times percent, so that half a rate needs no fraction
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const OrderLine &line = lines[i];
        if (!line.noEarn)
            doubled += (line.amount - line.paymentDiscount - spent[i]) * percent * (line.isSale ? 1 : 2);
    }
    return doubled / 200;
}

} // namespace sim
