// Serialisation and deserialisation of host values as plain variants (maps, lists, texts, numbers), the form in which
// they are written to disk as JSON.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace serder {

/// `text` as a map of "key" and "ru", and back; a plain text is read as the Russian text.
POSHOST_EXPORT QVariant toVariant(const tr::Tr &text);
POSHOST_EXPORT tr::Tr toTr(const QVariant &value);

/// A list of texts as a list of variants, and back.
POSHOST_EXPORT QVariant toVariant(const QStringList &texts);
POSHOST_EXPORT QStringList toStringList(const QVariant &value);

/// All stored properties of a Q_GADGET as a map, in the form of toPlain().
POSHOST_EXPORT QVariantMap gadgetToMap(const QMetaObject &type, const void *gadget);

/// Writes every entry of `map` that names a property of `type` into `gadget`; other entries are ignored.
POSHOST_EXPORT void mapToGadget(const QMetaObject &type, void *gadget, const QVariantMap &map);

/// Turns any value that the meta-type system can take apart into plain variants: enumerations become numbers, dates ISO
/// texts with milliseconds, gadgets maps, registered sequential containers lists, JSON values what they hold. Throws
/// BasicException that names the type where nothing of that applies, so that no value is lost silently.
POSHOST_EXPORT QVariant toPlain(const QVariant &value);

} // namespace serder
