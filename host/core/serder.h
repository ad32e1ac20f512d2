// Converts host values to JSON for storage.
#pragma once

#include <poshost_export.h>

#include <QtCore/QJsonValue>
#include <QtCore/QVariant>

namespace serder {

/// The JSON of any value that the meta-type system can take apart: dates become ISO texts with milliseconds, tr::Tr an
/// object of "key" and "ru", enumerations numbers, gadgets objects of their properties, and types with a conversion to
/// a map or a list objects and arrays. Throws BasicException naming the type for anything else, so that no value is
/// lost silently.
POSHOST_EXPORT QJsonValue toJson(const QVariant &value);

} // namespace serder
