// A line of a check: its sums, and its form as plain variants.
#include "goodsitem.h"

#include "storedrow.h"

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cmath>

namespace {

// A quantity such as 1.005 is not exact as a double. It is rounded to the millionth first, so that 1.005 kg at 1.00
// cost 1.01 and not 1.00. Amounts that no check can hold become zero, as with Money::fromRubles().
Money multiply(Money price, double quantity)
{
    constexpr long double parts = 1'000'000;
    constexpr long double limit = 9'000'000'000'000'000'000.0L;
    const long double kopecks =
        std::round(static_cast<long double>(price.kopecks()) * std::round(quantity * parts) / parts);
    return std::abs(kopecks) < limit ? Money::fromKopecks(static_cast<qint64>(kopecks)) : Money();
}

} // namespace

GoodsItem::GoodsItem() : m_tmc(QSharedPointer<Tmc>::create())
{}

GoodsItem::~GoodsItem() = default;

Money GoodsItem::getSum() const
{
    return multiply(m_price, m_quantity);
}

double GoodsItem::getDiscountApplyLimit(bool respectMinPrice) const
{
    const Money kept = respectMinPrice ? multiply(m_tmc->getMinPrice(), m_quantity) : Money();
    return std::max(getTotal() - kept, Money()).toRubles();
}

bool GoodsItem::isSaleable(double quantity, Money price)
{
    constexpr double largestQuantity = 1'000'000;
    // Also false for NaN.
    return quantity > 0 && quantity <= largestQuantity && Money::isSum(price.toRubles()) &&
           Money::isSum(price.toRubles() * quantity);
}

QVariantMap GoodsItem::toMap() const
{
    return QJsonDocument::fromJson(storedrow::textOf(*this)).object().toVariantMap();
}

QSharedPointer<GoodsItem> GoodsItem::fromMap(const QVariantMap &map)
{
    const auto item = QSharedPointer<GoodsItem>::create();
    storedrow::read(QJsonObject::fromVariantMap(map), *item);
    return item;
}
