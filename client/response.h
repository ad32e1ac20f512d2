// The service's answer to an order.
#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace kvo {

struct Response
{
    Response(const QJsonObject &answerResult) : result(answerResult) {}

    QJsonObject result; ///< The member "result" of the answer.
    QString basket;     ///< The identifier of the order that was sent; empty if the operation does not set it.

    /// Points that the order earns; 0 when the answer does not say.
    double earnPoints() const;

    /// What may be redeemed, one object per line, with "lineId" and "points"; empty when the answer does not say.
    QJsonArray redeemPoints() const;

    /// The sum of redeemPoints(), in points.
    double redeemPointsAmount() const;
};

} // namespace kvo
