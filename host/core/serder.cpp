#include <core/basicexception.h>
#include <core/serder.h>
#include <core/tr.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaProperty>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace serder {

namespace {

bool isScalar(QMetaType type)
{
    switch (type.id()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
        return true;
    default:
        return false;
    }
}

bool isDateOrTime(QMetaType type)
{
    return type.id() == QMetaType::QDateTime || type.id() == QMetaType::QDate || type.id() == QMetaType::QTime;
}

bool isPlain(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const auto &map = *static_cast<const QVariantMap *>(value.constData());
        return std::all_of(map.cbegin(), map.cend(), isPlain);
    }
    case QMetaType::QVariantList: {
        const auto &list = *static_cast<const QVariantList *>(value.constData());
        return std::all_of(list.cbegin(), list.cend(), isPlain);
    }
    default:
        return !value.isValid() || isScalar(value.metaType());
    }
}

// What is plain already, as most of what converters give, is shared and not copied.
QVariant plainMap(const QVariant &value)
{
    if (isPlain(value))
        return value;
    QVariantMap plain;
    const QVariantMap map = value.toMap();
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        plain.insert(plain.cend(), entry.key(), toPlain(entry.value()));
    return plain;
}

QVariant plainList(const QVariant &value)
{
    if (isPlain(value))
        return value;
    QVariantList plain;
    const QVariantList list = value.toList();
    for (const QVariant &element : list)
        plain.append(toPlain(element));
    return plain;
}

QVariantMap trToMap(const tr::Tr &text)
{
    return {{u"key"_s, text.key()}, {u"ru"_s, text.ru()}};
}

QVariantMap gadgetToMap(const QMetaObject &type, const void *gadget)
{
    QVariantMap map;
    for (int i = 0; i < type.propertyCount(); ++i) {
        if (const QMetaProperty property = type.property(i); property.isStored())
            map.insert(QString::fromLatin1(property.name()), toPlain(property.readOnGadget(gadget)));
    }
    return map;
}

} // namespace

QVariant toPlain(const QVariant &value)
{
    const QMetaType type = value.metaType();
    if (!type.isValid() || type.id() == QMetaType::Nullptr)
        return {};
    if (isScalar(type))
        return value;
    if (isDateOrTime(type))
        return value.toString(); // ISO 8601 with milliseconds.
    if (type == QMetaType::fromType<tr::Tr>())
        return trToMap(value.value<tr::Tr>());
    if (type.flags().testFlag(QMetaType::IsEnumeration))
        return value.toLongLong();
    // Before maps: any JSON value converts to a map, of nothing where it is no object.
    if (type.id() == QMetaType::QJsonValue)
        return value.toJsonValue().toVariant();
    if (type.id() == QMetaType::QJsonDocument)
        return value.toJsonDocument().toVariant();
    if (value.canConvert<QVariantMap>())
        return plainMap(QVariant(value.toMap()));
    if (type.flags().testFlag(QMetaType::IsGadget))
        return gadgetToMap(*type.metaObject(), value.constData());
    if (value.canConvert<QVariantList>())
        return plainList(QVariant(value.toList()));
    throw BasicException(u"Значение типа %1 нельзя записать на диск"_s.arg(QString::fromLatin1(type.name())));
}

} // namespace serder
