// Masking of events for logs and for the people who look after the queue.
#include "eventmask.h"

#include <QtCore/QJsonArray>
#include <QtCore/QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype visibleDigits = 4;

QString maskDigits(QString number)
{
    qsizetype toHide =
        std::count_if(number.cbegin(), number.cend(), [](QChar c) { return c.isDigit(); }) - visibleDigits;
    for (QChar &c : number)
        if (c.isDigit() && toHide-- > 0)
            c = u'*';
    return number;
}

QJsonValue maskedValue(const QString &name, const QJsonValue &value);

QJsonObject maskedObject(QJsonObject object)
{
    for (auto member = object.begin(); member != object.end(); ++member)
        member.value() = maskedValue(member.key(), member.value());
    return object;
}

QJsonArray maskedArray(const QString &name, QJsonArray array)
{
    for (QJsonValueRef element : array)
        element = maskedValue(name, element);
    return array;
}

bool isSecret(const QString &name)
{
    return name.endsWith(u"authorization", Qt::CaseInsensitive) || name.endsWith(u"cookie", Qt::CaseInsensitive);
}

QString maskedText(const QString &name, const QString &text)
{
    if (isSecret(name))
        return u"***"_s;
    return name.contains(u"phone", Qt::CaseInsensitive) ? maskDigits(text) : eventmask::maskPhones(text);
}

QJsonValue maskedValue(const QString &name, const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return maskedObject(value.toObject());
    case QJsonValue::Array:
        return maskedArray(name, value.toArray());
    case QJsonValue::String:
        return maskedText(name, value.toString());
    case QJsonValue::Double: {
        // A phone number may be written as a number; any other number stays one.
        const QString digits = value.toVariant().toString();
        const QString shown = maskedText(name, digits);
        return shown == digits ? value : QJsonValue(shown);
    }
    default:
        return value;
    }
}

} // namespace

QString eventmask::maskPhones(const QString &text)
{
    static const QRegularExpression phone(
        uR"((?:(?<=%2B)|(?<![\w.-]))[78][\s(-]*\d{3}[\s)-]*\d{3}[\s-]*\d{2}[\s-]*\d{2}(?![\w-]))"_s,
        QRegularExpression::CaseInsensitiveOption);
    QString result;
    qsizetype end = 0;
    for (auto matches = phone.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        result += QStringView(text).sliced(end, match.capturedStart() - end);
        result += maskDigits(match.captured());
        end = match.capturedEnd();
    }
    return result += QStringView(text).sliced(end);
}

QJsonObject eventmask::masked(const QJsonObject &event)
{
    return maskedObject(event);
}
