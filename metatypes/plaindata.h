// The plain form of the bonus records and impacts that the plugin stores with a check: maps, lists, numbers and texts,
// which a host can save and read without the plugin.
#pragma once

#include <document/bonusimpact.h>
#include <document/documentbonusrecord.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace kvo {

/// The record's properties by name.
QVariantMap toPlainMap(const DocumentBonusRecord &record);

/// A record with what toPlainMap() wrote. Entries that no property has are ignored; a property that cannot take its
/// entry keeps its default, and its name is appended to `unreadable`.
DocumentBonusRecord bonusRecordFrom(const QVariantMap &map, QStringList &unreadable);

/// One map per impact. The card is not part of it; the card index stands for it.
QVariantList toPlainList(const BonusImpactPtrList &impacts);

/// The impacts that toPlainList() wrote; none at all when any of them cannot be read.
BonusImpactPtrList bonusImpactsFrom(const QVariantList &list);

} // namespace kvo
