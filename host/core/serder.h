// Converts host values to plain variants for storage.
#pragma once

#include <poshost_export.h>

#include <QtCore/QVariant>

namespace serder {

/// Turns any value that the meta-type system can take apart into plain variants (maps, lists, texts, numbers), as they
/// are written to disk: enumerations become numbers, dates ISO texts with milliseconds, tr::Tr a map of "key" and "ru",
/// gadgets maps of their stored properties, registered sequential containers lists, JSON values what they hold. Throws
/// BasicException naming the type for anything else, so that no value is lost silently.
POSHOST_EXPORT QVariant toPlain(const QVariant &value);

} // namespace serder
