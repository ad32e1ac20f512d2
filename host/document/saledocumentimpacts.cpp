// A sales check's impacts. The discounts of the lines are always computed anew from the shares of the impacts, and an
// impact's totals are always the sum of its shares: that is why the sums agree to the kopeck.
#include "saledocument.h"

#include <core/basicexception.h>

#include <algorithm>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

using ImpactShares = QList<QSharedPointer<DocumentImpactDetail>>;

namespace {

Money sumOf(const DocumentImpactDetail &detail)
{
    return Money::fromRubles(detail.getDiscountSum());
}

Money sumOf(const ImpactShares &shares)
{
    return std::accumulate(shares.cbegin(), shares.cend(), Money(),
                           [](Money sum, const auto &share) { return sum + sumOf(*share); });
}

Money limitOf(const GoodsItem &item, const DocumentImpactDetail &discount)
{
    return Money::fromRubles(item.getDiscountApplyLimit(!discount.isMinPriceIgnored()));
}

bool isPoints(const DocumentImpact &impact)
{
    return impact.getTotals()->getDiscountType() == EDiscountType::Bonus;
}

ImpactShares distribute(const QSharedPointer<DocumentImpactDetail> &totals,
                        const QList<QSharedPointer<GoodsItem>> &goods)
{
    Money::requireSum(totals->getDiscountSum(), u"Скидка на чек, поле discountSum"_s);
    QList<int> positions;
    QList<Money> limits;
    for (const auto &item : goods) {
        if (!item->isAllowDiscount())
            continue;
        positions.append(item->getPosnum());
        limits.append(limitOf(*item, *totals));
    }
    const Money available = std::accumulate(limits.cbegin(), limits.cend(), Money());
    if (sumOf(*totals) > available)
        throw BasicException(
            u"Скидка %1 больше, чем можно снять с чека: %2"_s.arg(sumOf(*totals).toText(), available.toText()));
    const QList<Money> parts = Money::distribute(sumOf(*totals), limits);
    DocumentImpact distributed(totals);
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (!parts[i].isZero())
            distributed.addDetailForPosition(positions[i], parts[i].toRubles());
    }
    return distributed.getDetails();
}

ImpactShares sharesOf(const DocumentImpact &impact, const QList<QSharedPointer<GoodsItem>> &goods)
{
    if (!impact.getDetails().isEmpty())
        return impact.getDetails();
    const auto totals = impact.getTotals();
    if (totals->getDiscountObject() == EDiscountObject::Position)
        return ImpactShares(1, QSharedPointer<DocumentImpactDetail>::create(*totals));
    return distribute(totals, goods);
}

bool isGivenBy(const DocumentImpact &impact, const QSharedPointer<DocumentCardRecord> &card)
{
    if (const auto giver = impact.getCardRecord())
        return giver == card;
    return card->getCodeInternal() > 0 && impact.getTotals()->getCardIndex().toInt() == card->getCodeInternal();
}

} // namespace

// Rounds shares of points as a running total: each gets the total so far in kopecks, less what earlier shares got. So
// fractions of a kopeck neither vanish nor add up.
QList<Money> SaleDocument::roundShares(const DocumentImpact &impact, const ImpactShares &shares) const
{
    QList<Money> sums;
    double given = m_pointsGiven;
    Money taken = m_pointsTaken;
    for (const auto &share : shares) {
        Money::requireSum(share->getDiscountSum(),
                          u"Скидка на строку %1, поле discountSum"_s.arg(share->getPosition()));
        if (!isPoints(impact)) {
            sums.append(sumOf(*share));
            continue;
        }
        given += share->getGivenSum();
        sums.append(std::max(Money::fromRubles(given) - taken, Money()));
        taken += sums.last();
    }
    return sums;
}

void SaleDocument::requireFits(const ImpactShares &shares, const QList<Money> &sums) const
{
    QHash<int, Money> taken;
    for (qsizetype i = 0; i < shares.size(); ++i) {
        const int posnum = shares[i]->getPosition();
        const auto item = findGoodsItem(posnum);
        if (!item)
            throw BasicException(u"Скидка на строку %1, которой нет в чеке"_s.arg(posnum));
        const Money limit = item->isAllowDiscount() ? limitOf(*item, *shares[i]) : Money();
        taken[posnum] += sums[i];
        if (sums[i] < Money() || taken[posnum] > limit)
            throw BasicException(u"Скидка %2 на строку %1 невозможна: допустимо от 0.00 до %3"_s.arg(
                QString::number(posnum), taken[posnum].toText(), limit.toText()));
    }
}

void SaleDocument::addImpact(const QSharedPointer<DocumentImpact> &impact)
{
    if (m_impacts.contains(impact))
        return;
    const ImpactShares shares = sharesOf(*impact, m_goods);
    const QList<Money> sums = roundShares(*impact, shares);
    requireFits(shares, sums);

    // Nothing throws from here on.
    for (qsizetype i = 0; i < shares.size(); ++i)
        shares[i]->roundDiscountSum(sums[i]);
    impact->setDetails(shares);
    const auto totals = impact->getTotals();
    totals->roundDiscountSum(sumOf(shares));
    if (const auto card = impact->getCardRecord(); card && totals->getCardIndex().isNull())
        totals->setCardIndex(card->getCodeInternal());
    m_impacts.append(impact);
    countDiscounts(*impact);
}

void SaleDocument::removeImpactsOf(const QSharedPointer<DocumentCardRecord> &card)
{
    if (!card)
        return;
    m_impacts.removeIf([&](const auto &impact) { return isGivenBy(*impact, card); });
    updateDiscounts();
}

void SaleDocument::removeSharesOf(int posnum)
{
    m_impacts.removeIf([posnum](const auto &impact) {
        ImpactShares shares = impact->getDetails();
        if (shares.removeIf([posnum](const auto &share) { return share->getPosition() == posnum; }) == 0)
            return false;
        impact->setDetails(shares);
        impact->getTotals()->setDiscountSum(sumOf(shares).toRubles());
        return shares.isEmpty();
    });
    updateDiscounts();
}

Money SaleDocument::getDiscountSum() const
{
    return std::accumulate(m_impacts.cbegin(), m_impacts.cend(), Money(),
                           [](Money sum, const auto &impact) { return sum + sumOf(*impact->getTotals()); });
}

void SaleDocument::updateDiscounts()
{
    m_pointsGiven = 0;
    m_pointsTaken = {};
    for (const auto &item : std::as_const(m_goods))
        item->setDiscountSum({});
    for (const auto &impact : std::as_const(m_impacts))
        countDiscounts(*impact);
}

void SaleDocument::countDiscounts(const DocumentImpact &impact)
{
    for (const auto shares = impact.getDetails(); const auto &share : shares) {
        const Money sum = sumOf(*share);
        if (const auto item = findGoodsItem(share->getPosition()))
            item->setDiscountSum(item->getDiscountSum() + sum);
        if (isPoints(impact)) {
            m_pointsGiven += share->getGivenSum();
            m_pointsTaken += sum;
        }
    }
}
