// Reading an order's answer. Missing members and members of the wrong type count as absent.
#include "client/response.h"

#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

double Response::earnPoints() const
{
    return result.value("earnPoints"_L1).toDouble();
}

QJsonArray Response::redeemPoints() const
{
    return result.value("redeemPoints"_L1).toArray();
}

double Response::redeemPointsAmount() const
{
    const QJsonArray lines = redeemPoints();
    return std::accumulate(lines.cbegin(), lines.cend(), 0.0, [](double sum, const QJsonValue &line) {
        return sum + line.toObject().value("points"_L1).toDouble();
    });
}

} // namespace kvo
