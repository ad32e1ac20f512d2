// Strict reading of a map that came from a file: every entry is there and of its type, or an exception names it.
#pragma once

#include <core/basicexception.h>
#include <core/money.h>

#include <QtCore/QVariantMap>

/// The entries of one map. Every read throws BasicException that names the entry when it is missing or of another type.
class StoredMap
{
public:
    explicit StoredMap(const QVariantMap &map) : m_map(map) {}

    QString text(const QString &name) const;
    bool flag(const QString &name) const;
    double number(const QString &name) const;
    /// A whole number within the range of int.
    int integer(const QString &name) const;
    /// Whole kopecks.
    Money money(const QString &name) const;
    QVariantMap map(const QString &name) const;
    QVariantList list(const QString &name) const;

    /// What `read` makes of each map of a list; exceptions of `read` get the element's name put in front.
    template <class Read>
    auto each(const QString &name, Read read) const;

    /// The entry may be missing or null; both give an invalid variant.
    QVariant optional(const QString &name) const;

private:
    QVariant required(const QString &name) const;
    QVariant required(const QString &name, int type, const QString &expected) const;
    qint64 wholeNumber(const QString &name) const;

    QVariantMap m_map;
};

template <class Read>
auto StoredMap::each(const QString &name, Read read) const
{
    const QVariantList elements = list(name);
    QList<decltype(read(QVariantMap()))> result;
    result.reserve(elements.size());
    for (const QVariant &element : elements) {
        try {
            result.append(read(element.toMap()));
        } catch (const BasicException &error) {
            throw BasicException(name + QLatin1Char('[') + QString::number(result.size()) + QStringLiteral("]: ") +
                                 error.text().ru());
        }
    }
    return result;
}
