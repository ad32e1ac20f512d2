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

/// The record that toPlainMap() wrote. Ignores unknown entries; a property that cannot take its entry keeps its default
/// and is named in `unreadable`.
DocumentBonusRecord bonusRecordFrom(const QVariantMap &map, QStringList &unreadable);

/// One map per impact. It holds the card's index instead of the card.
QVariantList toPlainList(const BonusImpactPtrList &impacts);

/// The impacts that toPlainList() wrote; none at all when any of them cannot be read.
BonusImpactPtrList bonusImpactsFrom(const QVariantList &list);

} // namespace kvo
