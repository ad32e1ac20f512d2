// A text for people: an optional translation key and the Russian text that is shown when no translation is loaded.
#pragma once

#include <poshost_export.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace tr {

class POSHOST_EXPORT Tr
{
public:
    Tr() = default;
    explicit Tr(const QString &ru) : m_ru(ru) {}
    Tr(const QString &key, const QString &ru) : m_key(key), m_ru(ru) {}

    const QString &key() const { return m_key; }
    const QString &ru() const { return m_ru; }
    bool isEmpty() const { return m_key.isEmpty() && m_ru.isEmpty(); }

    friend bool operator==(const Tr &, const Tr &) = default;

private:
    QString m_key;
    QString m_ru;
};

} // namespace tr

Q_DECLARE_METATYPE(tr::Tr)
