// Strict reading of stored maps. JSON knows one kind of number, so a whole double is a whole number here, and a whole
// number is a double; texts are never taken for numbers.
#include "storedmap.h"

#include <cmath>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

[[noreturn]] void fail(const QString &name, const QString &reason)
{
    throw BasicException(u"запись «%1»: %2"_s.arg(name, reason));
}

bool isNumber(const QVariant &value)
{
    const int type = value.typeId();
    return type == QMetaType::Double || type == QMetaType::LongLong || type == QMetaType::Int;
}

} // namespace

QVariant StoredMap::required(const QString &name) const
{
    const auto entry = m_map.constFind(name);
    if (entry == m_map.cend())
        fail(name, u"отсутствует"_s);
    return *entry;
}

QVariant StoredMap::required(const QString &name, int type, const QString &expected) const
{
    const QVariant value = required(name);
    if (value.typeId() != type)
        fail(name, u"ожидается "_s + expected);
    return value;
}

QVariant StoredMap::optional(const QString &name) const
{
    const QVariant value = m_map.value(name);
    return value.isNull() ? QVariant() : value;
}

QString StoredMap::text(const QString &name) const
{
    return required(name, QMetaType::QString, u"текст"_s).toString();
}

bool StoredMap::flag(const QString &name) const
{
    return required(name, QMetaType::Bool, u"true или false"_s).toBool();
}

double StoredMap::number(const QString &name) const
{
    const QVariant value = required(name);
    if (!isNumber(value))
        fail(name, u"ожидается число"_s);
    return value.toDouble();
}

qint64 StoredMap::wholeNumber(const QString &name) const
{
    const QVariant value = required(name);
    constexpr double exactlyRepresented = 9007199254740992.0;
    const bool whole =
        isNumber(value) && (value.typeId() != QMetaType::Double || (std::trunc(value.toDouble()) == value.toDouble() &&
                                                                    std::abs(value.toDouble()) <= exactlyRepresented));
    if (!whole)
        fail(name, u"ожидается целое число"_s);
    return value.toLongLong();
}

int StoredMap::integer(const QString &name) const
{
    const qint64 value = wholeNumber(name);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        fail(name, u"число слишком велико"_s);
    return static_cast<int>(value);
}

Money StoredMap::money(const QString &name) const
{
    return Money::fromKopecks(wholeNumber(name));
}

QVariantMap StoredMap::map(const QString &name) const
{
    return required(name, QMetaType::QVariantMap, u"объект"_s).toMap();
}

QVariantList StoredMap::list(const QString &name) const
{
    return required(name, QMetaType::QVariantList, u"список"_s).toList();
}
