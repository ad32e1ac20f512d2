// The vocabulary of the tests that need a check: lines, cards and discounts in one line each.
#pragma once

#include <checks/checkrows.h>
#include <document/documentbonusrecord.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace builder {

using namespace Qt::Literals::StringLiterals;

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

inline const QDateTime moment(QDate(2024, 3, 1), QTime(12, 30, 15, 250));
inline const QJsonObject order{
    {u"basket"_s, u"order-1"_s}, {u"sum"_s, 0.1}, {u"lines"_s, QJsonArray{QJsonObject{{u"lineID"_s, u"1"_s}}}}};

/// Two lines, two cards, points on both lines, a payment, and plugin data.
inline QSharedPointer<SaleDocument> fullCheck()
{
    const auto document = check({10000, 30'000'000'000});
    const auto last = document->getGoodsItems().last();
    last->setCampaignLabels({u"NOSPEND"_s});
    last->setAllowBonusEarn(false);
    last->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    document->addCard(card(u"another"_s));
    const auto client = QSharedPointer<Client>::create();
    client->setName(u"Иванова Анна "_s);
    client->setBirthday({1990, 5, 17});
    client->setSex(Client::Sex::Female);
    const auto record = card(u"2600001"_s, 26);
    record->getCard()->setClient(client);
    record->setOperationId(u"order-1"_s);
    record->setOperationInfo(order);
    record->setPointsForSpend(150.25);
    record->setPointsForEarn(5.0);
    record->setBonusBalance(1000.25);
    record->setExtendedOptions(QVariantMap{{u"loyaltyStatus"_s, QJsonValue(u"Gold"_s)}});
    document->addCard(record);
    const auto points = shares({{1, 33.33}, {2, 0.0051}}, record);
    points->getTotals()->setDateTime(moment);
    points->getTotals()->setValutCode(QVariant(QMetaType::fromType<int>())); // null
    points->getTotals()->setDiscountName(u"Баллы %1 €😀 \"a\\b\"\n\x01"_s);
    points->getDetails().at(1)->setDateTime(QDateTime(moment.date(), moment.time(), Qt::UTC));
    document->addImpact(points);
    const auto payment = discount(10);
    payment->getTotals()->setValutCode(7);
    document->addImpact(payment);
    const DocumentBonusRecord bonus{u"2600001"_s, 12.5, moment, u"cashier 1"_s, 2};
    document->setPluginData(u"loyaltySystem26"_s, {{u"pointsForSpend"_s, 60.5},
                                                   {u"rates"_s, QVariantList{1e-7, -1e300, 0.1, 1e15, qint64(1) << 53}},
                                                   {u"bonusRecords"_s, QVariant::fromValue(QList{bonus, bonus})}});
    return document;
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
