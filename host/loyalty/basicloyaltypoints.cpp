// Points that pay for a part of the check and points that it earns. Points are counted in hundredths, the way Money
// counts kopecks, so that parts add up.
#include "basicloyaltysystem.h"

#include <core/currenttime.h>
#include <core/mockfactory.h>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace {

Money leftToPay(const GoodsItem &item)
{
    return Money::fromRubles(item.getDiscountApplyLimit(false));
}

// In binary, 0.3 / 0.1 is a little less than 3, but still means three steps.
double roundDownToStep(double points, double step)
{
    constexpr double tolerance = 1e-9;
    return Money::fromRubles(std::floor(points / step + tolerance) * step).toRubles();
}

} // namespace

bool BasicLoyaltySystem::hasPointsForSpend() const
{
    return pointsForSpend > 0;
}

double BasicLoyaltySystem::getPointsForSpend(const QSharedPointer<AbstractDocument> &document) const
{
    if (!document)
        return 0;
    const auto items = document->getGoodsItems();
    const Money costs = std::accumulate(items.cbegin(), items.cend(), Money(),
                                        [](Money sum, const auto &item) { return sum + leftToPay(*item); });
    return std::min(pointsForSpend, costs.toRubles());
}

void BasicLoyaltySystem::setPointsForSpend(double points)
{
    pointsForSpend = points > 0 ? points : 0;
}

bool BasicLoyaltySystem::recalculatePointsForSpend(const QSharedPointer<AbstractDocument> &document)
{
    if (document)
        pointsForSpend = getPointsForSpend(document);
    return true;
}

bool BasicLoyaltySystem::spendPoints()
{
    bonusImpacts.clear();
    const auto limits = getBonusImpactsLimits(currentDocument());
    const double payable = std::accumulate(limits.cbegin(), limits.cend(), 0.0);
    const double spent = roundDownToStep(std::min(pointsForSpend, payable), m_roundPrecisionForSpend);
    if (spent <= 0)
        return true;
    const auto totals = QSharedPointer<DocumentImpactDetail>::create();
    totals->setCardRecord(getCard());
    totals->setDateTime(MockFactory<CurrentTime>::create()->currentDateTime());
    totals->setDiscountType(EDiscountType::Bonus);
    totals->setDiscountMode(EDiscountMode::LoyaltySystem);
    totals->setDiscountName(u"Баллы"_s);
    totals->setDiscountRate(spent);
    totals->setDiscountSum(spent);
    totals->setImpactSource(EImpactSource::LoyaltySystem);
    totals->setMinPriceIgnored(true);
    bonusImpacts.append(QSharedPointer<BonusImpact>::create(totals));
    return true;
}

QHash<int, double> BasicLoyaltySystem::getBonusImpactsLimits(const QSharedPointer<AbstractDocument> &document) const
{
    QHash<int, double> limits;
    const auto items = document ? document->getGoodsItems() : QList<QSharedPointer<GoodsItem>>();
    for (const auto &item : items)
        limits.insert(item->getPosnum(), item->isAllowDiscount() ? item->getDiscountApplyLimit(false) : 0.0);
    return limits;
}

bool BasicLoyaltySystem::hasBonusImpacts() const
{
    return !bonusImpacts.isEmpty();
}

BonusImpactPtrList BasicLoyaltySystem::getBonusImpactsForSpend() const
{
    return bonusImpacts;
}

double BasicLoyaltySystem::getRoundPrecisionForSpend() const
{
    return m_roundPrecisionForSpend;
}

void BasicLoyaltySystem::setRoundPrecisionForSpend(double precision)
{
    if (precision > 0)
        m_roundPrecisionForSpend = precision;
}

bool BasicLoyaltySystem::hasPointsForEarn() const
{
    return pointsForEarn > 0;
}

double BasicLoyaltySystem::getPointsForEarn() const
{
    return pointsForEarn;
}

QList<DocumentBonusRecord> BasicLoyaltySystem::getBonusRecords() const
{
    return bonusRecords;
}

bool BasicLoyaltySystem::recalculatePointsForEarn()
{
    const Money hundredths =
        std::accumulate(bonusRecords.cbegin(), bonusRecords.cend(), Money(),
                        [](Money sum, const auto &record) { return sum + Money::fromRubles(record.amount); });
    pointsForEarn = hundredths.toRubles();
    return true;
}

double BasicLoyaltySystem::calculatePointsForEarnByQualifier(const QString &qualifier, int position)
{
    Money hundredths;
    for (const DocumentBonusRecord &record : std::as_const(bonusRecords)) {
        if (record.position == position && (qualifier.isEmpty() || record.cardNumber == qualifier))
            hundredths += Money::fromRubles(record.amount);
    }
    return hundredths.toRubles();
}

bool BasicLoyaltySystem::recalculateAllPoints(const QSharedPointer<AbstractDocument> &document)
{
    return recalculatePointsForSpend(document) && recalculatePointsForEarn();
}

bool BasicLoyaltySystem::removeEarnByValutCode(int)
{
    return removeEarnAfterClose();
}

bool BasicLoyaltySystem::removeEarnAfterClose()
{
    const bool earned = hasPointsForEarn() || !bonusRecords.isEmpty();
    pointsForEarn = 0;
    bonusRecords.clear();
    return earned;
}

QList<DocumentBonusRecord> BasicLoyaltySystem::distributeBonusRecord(const QSharedPointer<AbstractDocument> &document,
                                                                     const DocumentBonusRecord &record) const
{
    Money::requireSum(record.amount, u"Начисление баллов, поле amount"_s);
    QList<int> positions;
    QList<Money> weights;
    const auto items = document ? document->getGoodsItems() : QList<QSharedPointer<GoodsItem>>();
    for (const auto &item : items) {
        const Money weight = item->isAllowBonusEarn() ? leftToPay(*item) : Money();
        if (weight.isZero())
            continue;
        positions.append(item->getPosnum());
        weights.append(weight);
    }
    const QList<Money> parts = Money::distribute(Money::fromRubles(record.amount), weights);
    QList<DocumentBonusRecord> distributed;
    distributed.reserve(parts.size());
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (parts[i].isZero())
            continue;
        distributed.append(record);
        distributed.last().position = positions[i];
        distributed.last().amount = parts[i].toRubles();
    }
    return distributed.isEmpty() ? QList<DocumentBonusRecord>{record} : distributed;
}
