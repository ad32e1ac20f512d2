// The text of JSON, as it is sent and stored.
#pragma once

#include <poshost_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>

namespace jsontext {

/// The compact text of a document, in UTF-8: what QJsonDocument::toJson() gives, in half of its time; empty for a null
/// document. Only one half of a surrogate pair, which is no character, is replaced instead of escaped.
POSHOST_EXPORT QByteArray compact(const QJsonDocument &json);

} // namespace jsontext
