// The vocabulary of the tests that need a check: lines, cards and discounts in one line each.
#pragma once

#include <checks/checkrows.h>

#include <algorithm>

namespace builder {

inline QSharedPointer<GoodsItem> line(qint64 kopecks, double quantity = 1, qint64 minPriceKopecks = 0)
{
    const auto item = QSharedPointer<GoodsItem>::create();
    item->setPrice(Money::fromKopecks(kopecks));
    item->setQuantity(quantity);
    item->getTmc()->setMinPrice(Money::fromKopecks(minPriceKopecks));
    return item;
}

/// A check with one line of quantity 1 for each price.
inline QSharedPointer<SaleDocument> check(const QList<qint64> &pricesInKopecks)
{
    const auto document = QSharedPointer<SaleDocument>::create();
    for (const qint64 price : pricesInKopecks)
        document->addGoodsItem(line(price));
    return document;
}

inline QSharedPointer<DocumentCardRecord> card(const QString &number, int systemCode = 0)
{
    const auto record = QSharedPointer<DocumentCardRecord>::create();
    record->setNumber(number);
    record->setLoyaltySystemCode(systemCode);
    return record;
}

inline QSharedPointer<DocumentImpactDetail> totals(double rubles, const QSharedPointer<DocumentCardRecord> &giver = {})
{
    const auto detail = QSharedPointer<DocumentImpactDetail>::create();
    detail->setDiscountSum(rubles);
    detail->setMinPriceIgnored(true);
    detail->setCardRecord(giver);
    return detail;
}

/// A discount on the whole check, for the check to distribute.
inline QSharedPointer<DocumentImpact> discount(double rubles, const QSharedPointer<DocumentCardRecord> &giver = {})
{
    return QSharedPointer<BonusImpact>::create(totals(rubles, giver));
}

/// A discount with given shares of positions.
inline QSharedPointer<DocumentImpact> shares(const QList<QPair<int, double>> &rublesByPosition,
                                             const QSharedPointer<DocumentCardRecord> &giver = {})
{
    const auto impact = QSharedPointer<DocumentImpact>::create(totals(0, giver));
    for (const auto &[position, rubles] : rublesByPosition)
        impact->addDetailForPosition(position, rubles);
    return impact;
}

/// All rows of the check.
inline QList<CheckRow> rows(const SaleDocument &check)
{
    return CheckRows().update(check).written;
}

/// For comparing: all that is stored.
inline QByteArray text(const SaleDocument &check)
{
    QByteArrayList lines;
    for (const CheckRow &row : rows(check))
        lines.append(row.kind.toUtf8() + ' ' + row.key.toByteArray() + ' ' + row.content);
    std::sort(lines.begin(), lines.end());
    return lines.join('\n');
}

/// The check as it comes back from the store.
inline QSharedPointer<SaleDocument> restored(const SaleDocument &check)
{
    return CheckRows().read(rows(check));
}

} // namespace builder
