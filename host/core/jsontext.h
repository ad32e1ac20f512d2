// Writes JSON as it is sent and stored.
#pragma once

#include <poshost_export.h>

#include <QtCore/QByteArray>
#include <QtCore/QCborStreamWriter>
#include <QtCore/QJsonDocument>

#include <functional>

namespace jsontext {

/// The compact text of a document, in UTF-8: the same as QJsonDocument::toJson(), in less time (see jsontext.cpp);
/// empty for a null document. Only lone surrogates differ: they are replaced instead of escaped.
POSHOST_EXPORT QByteArray compact(const QJsonDocument &json);

/// The same for the one value that `write` appends, without a QJsonDocument to be built first: a number of 64 bits, a
/// text, a bool or a null, or an array or map of such values with texts as keys, started with its length.
POSHOST_EXPORT QByteArray compact(const std::function<void(QCborStreamWriter &)> &write);

} // namespace jsontext
