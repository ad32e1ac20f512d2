#include <core/basicexception.h>
#include <core/serder.h>
#include <core/tr.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaProperty>

using namespace Qt::Literals::StringLiterals;

namespace serder {

namespace {

QJsonObject toObject(const QVariantMap &map)
{
    QJsonObject object;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        object.insert(entry.key(), toJson(entry.value()));
    return object;
}

QJsonArray toArray(const QVariantList &list)
{
    QJsonArray array;
    for (const QVariant &element : list)
        array.append(toJson(element));
    return array;
}

QJsonObject toObject(const QMetaObject &type, const void *gadget)
{
    QJsonObject object;
    for (int i = 0; i < type.propertyCount(); ++i)
        object.insert(QString::fromLatin1(type.property(i).name()), toJson(type.property(i).readOnGadget(gadget)));
    return object;
}

} // namespace

QJsonValue toJson(const QVariant &value)
{
    const QMetaType type = value.metaType();
    switch (type.id()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QJsonValue:
    case QMetaType::QJsonObject:
    case QMetaType::QJsonArray:
    case QMetaType::QJsonDocument:
        // A null can have a type, such as that of a database column.
        return value.isNull() ? QJsonValue::Null : QJsonValue::fromVariant(value);
    case QMetaType::QDateTime:
    case QMetaType::QDate:
    case QMetaType::QTime:
        return value.toString();
    default:
        break;
    }
    if (type == QMetaType::fromType<tr::Tr>()) {
        const auto text = value.value<tr::Tr>();
        return QJsonObject{{u"key"_s, text.key()}, {u"ru"_s, text.ru()}};
    }
    if (type.flags().testFlag(QMetaType::IsEnumeration))
        return value.toLongLong();
    if (value.canConvert<QVariantMap>())
        return toObject(value.toMap());
    if (type.flags().testFlag(QMetaType::IsGadget))
        return toObject(*type.metaObject(), value.constData());
    if (value.canConvert<QVariantList>())
        return toArray(value.toList());
    throw BasicException(u"Значение типа %1 нельзя записать на диск"_s.arg(QString::fromLatin1(type.name())));
}

} // namespace serder
