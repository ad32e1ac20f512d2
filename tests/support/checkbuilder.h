// The vocabulary of the tests that need a check: lines, cards and discounts in one line each.
#pragma once

#include <document/saledocument.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

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

inline QByteArray toJson(const QVariantMap &map)
{
    return QJsonDocument(QJsonObject::fromVariantMap(map)).toJson();
}

/// The check as it comes back from a file.
inline QVariantMap stored(const SaleDocument &check)
{
    return QJsonDocument::fromJson(check.toJson()).object().toVariantMap();
}

} // namespace builder
