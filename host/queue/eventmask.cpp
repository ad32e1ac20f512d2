// Masking of events for logs and for the people who look after the queue.
#include "eventmask.h"

#include <QtCore/QJsonArray>
#include <QtCore/QRegularExpression>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype visibleDigits = 4;

QString maskDigits(const QString &text)
{
    QString number = text;
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

bool isNumberToHide(const QString &name)
{
    return name.contains(u"phone", Qt::CaseInsensitive) || name.contains(u"card", Qt::CaseInsensitive);
}

/// `text` with what `pattern` finds replaced by what `mask` makes of it.
QString replaced(const QString &text, const QRegularExpression &pattern, QString (*mask)(const QString &))
{
    QString result;
    qsizetype end = 0;
    for (auto matches = pattern.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        result += QStringView(text).sliced(end, match.capturedStart() - end);
        result += mask(match.captured());
        end = match.capturedEnd();
    }
    return result += QStringView(text).sliced(end);
}

QString maskPhones(const QString &text)
{
    static const QRegularExpression phone(
        uR"((?:(?<=%2B)|(?<![\w.-]))[78][\s(-]*\d{3}[\s)-]*\d{3}[\s-]*\d{2}[\s-]*\d{2}(?![\w-]))"_s,
        QRegularExpression::CaseInsensitiveOption);
    return replaced(text, phone, maskDigits);
}

QString maskPasswords(const QString &text)
{
    static const QRegularExpression password(uR"((?<=://)[^/?#\s]*@)"_s);
    return replaced(text, password,
                    [](const QString &login) { return login.section(u':', 0, 0).remove(u'@') + u":***@"_s; });
}

QString maskCards(const QString &text)
{
    static const QRegularExpression card(uR"((?<![\w.-])\d{12,19}(?![\w-]))"_s);
    return replaced(text, card, maskDigits);
}

QString maskedText(const QString &name, const QString &text)
{
    if (isSecret(name))
        return u"***"_s;
    return isNumberToHide(name) ? maskDigits(text) : maskPasswords(maskPhones(text));
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
        // Phone and card numbers may be written as numbers; any other number stays one.
        const QString digits = value.toVariant().toString();
        const QString shown = maskedText(name, digits);
        return shown == digits ? value : QJsonValue(shown);
    }
    default:
        return value;
    }
}

} // namespace

QString eventmask::maskText(const QString &text)
{
    return maskCards(maskPasswords(maskPhones(text)));
}

QJsonObject eventmask::masked(const QJsonObject &event)
{
    return maskedObject(event);
}
