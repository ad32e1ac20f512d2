// A card on a check. Points are validated where they enter the check, so that nothing gets in that a till cannot print,
// add up or store.
#include "documentcardrecord.h"

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<double> numberOf(const QVariant &points)
{
    return points.isNull() ? std::nullopt : std::optional(points.toDouble());
}

} // namespace

DocumentCardRecord::DocumentCardRecord() : m_card(QSharedPointer<Card>::create())
{}

void DocumentCardRecord::setPointsForSpend(double points)
{
    Money::requireSum(points, u"Карта, поле pointsForSpend"_s);
    m_pointsForSpend = points;
}

void DocumentCardRecord::setPointsForEarn(const QVariant &points)
{
    Money::requireSum(points.toDouble(), u"Карта, поле pointsForEarn"_s);
    m_pointsForEarn = numberOf(points);
}

void DocumentCardRecord::setBonusBalance(const QVariant &balance)
{
    Money::requireSum(std::abs(balance.toDouble()), u"Карта, поле bonusBalance"_s);
    m_bonusBalance = numberOf(balance);
}
