// Makes the types that travel through the host's properties, events and plugin data known to Qt's meta-type system.
#pragma once

namespace kvo {

/// Registers the types with their names and converters, once per process; later calls do nothing. Thread-safe.
///
/// - "Event"; "QSharedPointer<AbstractDocument>", convertible to QObject*; "QNetworkAccessManager::Operation"
/// - "DocumentBonusRecord", convertible to a map of its properties; "QList<DocumentBonusRecord>" as a sequential
/// container
/// - "BonusImpactPtrList", convertible to a list of maps and back, so that plugin data survives a restart as plain JSON
void registerMetaTypes();

} // namespace kvo
