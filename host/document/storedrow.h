// A stored object as JSON. Private to the host.
//
// Reading is strict: a field that is missing, of another type or outside its limits throws BasicException that names
// it. Money is a whole number of kopecks, an enumeration its number, a time ISO 8601 text, a null pointer null.
#pragma once

#include "edocumenttype.h"
#include "storedfield.h"

#include <core/basicexception.h>
#include <core/jsontext.h>
#include <core/money.h>

#include <QtCore/QCborStreamWriter>
#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QSharedPointer>

#include <concepts>
#include <optional>
#include <type_traits>
#include <utility>

namespace storedrow {

template <class T>
concept Stored = requires
{
    T::storedFields();
};

/// Appends a field's value. Throws BasicException for a number that is not finite and for a variant that
/// serder::toJson() refuses.
void append(QCborStreamWriter &row, const QVariant &value);
void append(QCborStreamWriter &row, double value);
void append(QCborStreamWriter &row, Money value);
void append(QCborStreamWriter &row, const QDate &value);
void append(QCborStreamWriter &row, const QDateTime &value);
void append(QCborStreamWriter &row, const QVariantList &value);

void fromJson(const QJsonValue &json, QVariant &value);
void fromJson(const QJsonValue &json, QString &value);
void fromJson(const QJsonValue &json, bool &value);
void fromJson(const QJsonValue &json, int &value);
void fromJson(const QJsonValue &json, double &value);
void fromJson(const QJsonValue &json, Money &value);
void fromJson(const QJsonValue &json, QDate &value);
void fromJson(const QJsonValue &json, QDateTime &value);
void fromJson(const QJsonValue &json, QVariantList &value);

/// The exception for a field, prefixed with the name of the field that it is part of.
BasicException fieldError(const QString &name, const BasicException &error);
[[noreturn]] void fail(const QString &problem);

/// Whether an enumeration that counts from 0 to its `Last` has the value.
constexpr bool isKnown(auto value)
{
    return static_cast<int>(value) >= 0 && value <= decltype(value)::Last;
}
constexpr bool isKnown(EDocumentType value)
{
    return value == EDocumentType::Sale || value == EDocumentType::Refund || value == EDocumentType::RefundBySale;
}

/// The object as compact JSON.
template <Stored T>
QByteArray textOf(const T &object);
/// Appends the object. A row with members of its own appends the fields alone, in a map of a size that includes them.
template <Stored T>
void append(QCborStreamWriter &row, const T &object);
template <Stored T>
void appendFields(QCborStreamWriter &row, const T &object);
template <Stored T>
constexpr quint64 fieldCount = std::tuple_size_v<decltype(T::storedFields())>;
/// Into an object that is new.
template <Stored T>
void read(const QJsonObject &row, T &object);
/// Compares field by field, and objects instead of pointers to them.
template <Stored T>
bool isSame(const T &a, const T &b);
/// A copy that shares no stored object with the original.
template <Stored T>
QSharedPointer<T> copy(const T &object);
/// What the fields hold, to be compared later.
template <Stored T>
auto values(const T &object)
{
    return std::apply([&](const auto &...field) { return std::tuple(object.*field.member...); }, T::storedFields());
}

template <class T>
requires std::same_as<T, QString> || std::same_as<T, bool> || std::same_as<T, int>
void append(QCborStreamWriter &row, const T &value)
{
    row.append(value);
}
template <class Enum>
requires std::is_enum_v<Enum>
void append(QCborStreamWriter &row, Enum value)
{
    append(row, static_cast<int>(value));
}
template <class T>
void append(QCborStreamWriter &row, const std::optional<T> &value)
{
    value ? append(row, *value) : row.appendNull();
}
template <Stored T>
void append(QCborStreamWriter &row, const QSharedPointer<T> &value)
{
    value ? append(row, *value) : row.appendNull();
}
template <Stored T>
void append(QCborStreamWriter &row, const QList<QSharedPointer<T>> &values)
{
    row.startArray(static_cast<quint64>(values.size()));
    for (const auto &value : values)
        append(row, value);
    row.endArray();
}

template <class Enum>
requires std::is_enum_v<Enum>
void fromJson(const QJsonValue &json, Enum &value)
{
    int code = 0;
    fromJson(json, code);
    value = static_cast<Enum>(code);
    if (!isKnown(value))
        fail(QStringLiteral("неизвестное значение ") + QString::number(code));
}
template <class T>
void fromJson(const QJsonValue &json, std::optional<T> &value)
{
    if (!json.isNull())
        fromJson(json, value.emplace());
}
template <Stored T>
void fromJson(const QJsonValue &json, QSharedPointer<T> &value)
{
    value.reset();
    if (json.isNull())
        return;
    if (!json.isObject())
        fail(QStringLiteral("ожидается объект"));
    value = QSharedPointer<T>::create();
    read(json.toObject(), *value);
}
template <Stored T>
void fromJson(const QJsonValue &json, QList<QSharedPointer<T>> &values)
{
    if (!json.isArray())
        fail(QStringLiteral("ожидается список"));
    for (const auto array = json.toArray(); const auto &element : array)
        if (fromJson(element, values.emplaceBack()); !values.last())
            fail(QStringLiteral("ожидается объект"));
}

template <class T>
bool isSame(const T &a, const T &b)
{
    return a == b;
}
inline bool isSame(const QString &a, const QString &b)
{
    return a.size() == b.size() && (a.constData() == b.constData() || a == b); // mostly the same text, shared
}
inline bool isSame(const QVariant &a, const QVariant &b)
{
    return a.metaType() == b.metaType() && a == b; // 5 and 5.0 are equal, and read back as different types
}
template <Stored T>
bool isSame(const QSharedPointer<T> &a, const QSharedPointer<T> &b)
{
    return a.isNull() || b.isNull() ? a == b : isSame(*a, *b);
}
template <Stored T>
bool isSame(const QList<QSharedPointer<T>> &a, const QList<QSharedPointer<T>> &b)
{
    return a.size() == b.size() && std::equal(a.cbegin(), a.cend(), b.cbegin(),
                                              [](const auto &left, const auto &right) { return isSame(left, right); });
}

template <class T>
void unshare(T &)
{}
template <Stored T>
void unshare(QSharedPointer<T> &value)
{
    if (value)
        value = copy(*value);
}
template <Stored T>
void unshare(QList<QSharedPointer<T>> &values)
{
    for (auto &value : values)
        unshare(value);
}

template <Stored T>
QByteArray textOf(const T &object)
{
    return jsontext::compact([&object](QCborStreamWriter &row) { append(row, object); });
}

template <Stored T>
void append(QCborStreamWriter &row, const T &object)
{
    row.startMap(fieldCount<T>);
    appendFields(row, object);
    row.endMap();
}

template <Stored T>
void appendFields(QCborStreamWriter &row, const T &object)
{
    std::apply(
        [&](const auto &...field) {
            ((row.append(QLatin1StringView(field.name)), append(row, object.*field.member)), ...);
        },
        T::storedFields());
}

template <Stored T>
void read(const QJsonObject &row, T &object)
{
    const auto readField = [&](const auto &field) {
        try {
            auto &value = object.*field.member;
            fromJson(row.value(QLatin1StringView(field.name)), value);
            if (field.isAllowed && !field.isAllowed(value))
                fail(QStringLiteral("недопустимое значение"));
        } catch (const BasicException &error) {
            throw fieldError(QString::fromLatin1(field.name), error);
        }
    };
    std::apply([&](const auto &...field) { (readField(field), ...); }, T::storedFields());
}

template <Stored T>
bool isSame(const T &a, const T &b)
{
    return std::apply([&](const auto &...field) { return (isSame(a.*field.member, b.*field.member) && ...); },
                      T::storedFields());
}

template <Stored T>
QSharedPointer<T> copy(const T &object)
{
    const auto result = QSharedPointer<T>::create(object);
    std::apply([&](const auto &...field) { (unshare((*result).*field.member), ...); }, T::storedFields());
    return result;
}

} // namespace storedrow
