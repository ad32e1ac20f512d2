// The values of stored fields. Never accepts a text as a number, or a fraction as a whole number.
#include "storedrow.h"

#include <core/serder.h>

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

QJsonValue toJson(const QVariant &value)
{
    return serder::toJson(value);
}

QJsonValue toJson(double value)
{
    if (!std::isfinite(value))
        fail(u"число не конечно"_s);
    return value;
}

QJsonValue toJson(Money value)
{
    return value.kopecks();
}

QJsonValue toJson(const QDate &value)
{
    return value.toString(Qt::ISODate);
}

QJsonValue toJson(const QDateTime &value)
{
    return value.toString(Qt::ISODateWithMs);
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
