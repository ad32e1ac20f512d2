// Writes the plugin's state to the check's plugin data and reads it back after a restart.
#include "metatypes/plaindata.h"
#include "plugin/plugin.h"

#include <cashier/savetofilelogic.h>
#include <core/mockfactory.h>

#include <log4qt/logger.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

const QString pointsForSpendKey = u"pointsForSpend"_s;
const QString pointsForEarnKey = u"pointsForEarn"_s;
const QString bonusRecordsKey = u"bonusRecords"_s;
const QString bonusImpactsKey = u"bonusImpacts"_s;
const QString orderCreatedKey = u"orderCreated"_s;

/// Whether something other than an empty list is stored and none of it could be read.
template <class List>
bool isDamaged(const QVariant &stored, const List &read)
{
    if (stored.isNull() || !read.isEmpty() || stored.metaType() == QMetaType::fromType<List>())
        return false;
    return stored.typeId() != QMetaType::QVariantList || !stored.toList().isEmpty();
}

/// Plain data holds the card's index, not the card.
void linkCard(const BonusImpactPtrList &impacts, const QSharedPointer<DocumentCardRecord> &card)
{
    for (const auto &impact : impacts) {
        impact->getTotals()->setCardRecord(card);
        for (const auto details = impact->getDetails(); const auto &detail : details)
            detail->setCardRecord(card);
    }
}

} // namespace

void Plugin::updatePluginData() const
{
    storePluginData();
    MockFactory<SaveToFileLogic>::create()->save(currentDocument(), QString(), 0.0);
}

/// Writes the state into the check's plugin data, which the host's next save stores.
void Plugin::storePluginData() const
{
    setPluginData(pointsForSpendKey, pointsForSpend);
    setPluginData(pointsForEarnKey, pointsForEarn);
    setPluginData(bonusRecordsKey, QVariant::fromValue(bonusRecords));
    setPluginData(bonusImpactsKey, QVariant::fromValue(bonusImpacts));
    setPluginData(orderCreatedKey, orderCreated);
}

bool Plugin::restoreLoyaltySystem()
{
    pendingUpdate = false;
    QStringList unreadable;
    const auto points = [&](const QString &key) {
        bool good = false;
        const double value = getPluginData(key, QVariant(0.0)).toDouble(&good);
        if (!good)
            unreadable.append(key);
        return value;
    };
    pointsForSpend = points(pointsForSpendKey);
    pointsForEarn = points(pointsForEarnKey);

    const QVariant records = getPluginData(bonusRecordsKey, QVariant());
    const QVariantList entries = records.toList();
    bonusRecords.clear();
    for (const QVariant &entry : entries) {
        if (entry.canConvert<QVariantMap>())
            bonusRecords.append(bonusRecordFrom(entry.toMap(), unreadable));
    }
    if (isDamaged(records, bonusRecords) || bonusRecords.size() < entries.size())
        unreadable.append(bonusRecordsKey);

    const QVariant impacts = getPluginData(bonusImpactsKey, QVariant());
    bonusImpacts = impacts.value<BonusImpactPtrList>();
    // A host may have stored impacts that are not the plugin's.
    bonusImpacts.removeIf([](const auto &impact) { return !impact || !impact->getTotals(); });
    if (isDamaged(impacts, bonusImpacts))
        unreadable.append(bonusImpactsKey);
    linkCard(bonusImpacts, getCard());

    const QVariant created = getPluginData(orderCreatedKey, QVariant(false));
    orderCreated = created.toBool();
    if (!created.canConvert<bool>())
        unreadable.append(orderCreatedKey);
    if (!unreadable.isEmpty())
        logger->warn(u"Данные лояльности чека прочитаны не полностью, пропущено: %1"_s.arg(unreadable.join(u", "_s)));
    return true;
}

} // namespace kvo
