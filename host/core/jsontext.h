// Writes JSON as it is sent and stored.
#pragma once

#include <poshost_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>

namespace jsontext {

/// The compact text of a document, in UTF-8: the same as QJsonDocument::toJson(), in less time (see jsontext.cpp);
/// empty for a null document. Only lone surrogates differ: they are replaced instead of escaped.
POSHOST_EXPORT QByteArray compact(const QJsonDocument &json);

} // namespace jsontext
