// The values of stored fields. Never accepts a text as a number, or a fraction as a whole number.
#include "storedrow.h"

#include <core/serder.h>

#include <QtCore/QCborValue>

#include <cmath>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace storedrow {

namespace {

void require(bool holds, const QString &expected)
{
    if (!holds)
        fail(u"ожидается "_s + expected);
}

qint64 wholeNumber(const QJsonValue &json)
{
    const QString expected = u"целое число"_s;
    require(json.isDouble(), expected);
    const qint64 number = json.toInteger();
    require(number != 0 || json.toInteger(1) == 0, expected); // the default stands for a fraction
    return number;
}

} // namespace

void fail(const QString &problem)
{
    throw BasicException(problem);
}

BasicException fieldError(const QString &name, const BasicException &error)
{
    const QString inner = error.text().ru();
    const QString start = u"поле «"_s;
    return BasicException(inner.startsWith(start) ? start + name + u'.' + inner.mid(start.size())
                                                  : start + name + u"»: "_s + inner);
}

void append(QCborStreamWriter &row, const QVariant &value)
{
    QCborValue::fromJsonValue(serder::toJson(value)).toCbor(row);
}

void append(QCborStreamWriter &row, double value)
{
    if (!std::isfinite(value))
        fail(u"число не конечно"_s);
    row.append(value);
}

void append(QCborStreamWriter &row, Money value)
{
    row.append(value.kopecks());
}

void append(QCborStreamWriter &row, const QDate &value)
{
    row.append(value.toString(Qt::ISODate));
}

void append(QCborStreamWriter &row, const QDateTime &value)
{
    row.append(value.toString(Qt::ISODateWithMs));
}

void append(QCborStreamWriter &row, const QVariantList &value)
{
    row.startArray(static_cast<quint64>(value.size()));
    for (const QVariant &element : value)
        append(row, element);
    row.endArray();
}

void fromJson(const QJsonValue &json, QVariant &value)
{
    require(!json.isUndefined(), u"значение"_s);
    value = json.isNull() ? QVariant() : json.toVariant();
}

void fromJson(const QJsonValue &json, QString &value)
{
    require(json.isString(), u"текст"_s);
    value = json.toString();
}

void fromJson(const QJsonValue &json, bool &value)
{
    require(json.isBool(), u"true или false"_s);
    value = json.toBool();
}

void fromJson(const QJsonValue &json, int &value)
{
    const qint64 number = wholeNumber(json);
    require(number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max(),
            u"меньшее целое число"_s);
    value = static_cast<int>(number);
}

void fromJson(const QJsonValue &json, double &value)
{
    require(json.isDouble(), u"число"_s);
    value = json.toDouble();
}

void fromJson(const QJsonValue &json, Money &value)
{
    value = Money::fromKopecks(wholeNumber(json));
}

void fromJson(const QJsonValue &json, QDate &value)
{
    require(json.isString(), u"дата"_s);
    const QString text = json.toString();
    value = QDate::fromString(text, Qt::ISODate);
    require(value.isValid() || text.isEmpty(), u"дата"_s);
}

void fromJson(const QJsonValue &json, QDateTime &value)
{
    require(json.isString(), u"дата и время"_s);
    const QString text = json.toString();
    value = QDateTime::fromString(text, Qt::ISODateWithMs);
    require(value.isValid() || text.isEmpty(), u"дата и время"_s);
}

void fromJson(const QJsonValue &json, QVariantList &value)
{
    require(json.isArray(), u"список"_s);
    value = json.toArray().toVariantList();
}

} // namespace storedrow
