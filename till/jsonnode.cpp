// Reading JSON strictly: a wrong type or an unknown key is an error that says where it stands.
#include "jsonnode.h"

#include <core/basicexception.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr double highestAmount = 1e9;   // rubles
constexpr double highestQuantity = 1e6; // pieces or kilograms

/// Allows for the error of a binary fraction that was multiplied.
bool isWhole(double number)
{
    constexpr double error = 4 * std::numeric_limits<double>::epsilon();
    return std::abs(number - std::round(number)) <= error * std::max(1.0, std::abs(number));
}

/// Of an object that has a key twice QJsonDocument silently takes the last one. `json` must be well-formed.
void refuseRepeatedKeys(const QString &fileName, const QString &json)
{
    static const QRegularExpression token(uR"re([{}]|"((?:[^"\\]++|\\.)*+)"\s*+(:?))re"_s);
    QList<QSet<QString>> objects;
    for (const auto &match : token.globalMatch(json)) {
        if (match.captured() == "{"_L1)
            objects.append(QSet<QString>());
        else if (match.captured() == "}"_L1)
            objects.removeLast();
        else if (match.capturedLength(2) > 0 && objects.constLast().contains(match.captured(1)))
            throw BasicException(u"%1: строка %2: ключ \"%3\" задан второй раз"_s.arg(
                fileName, QString::number(json.left(match.capturedStart()).count(u'\n') + 1), match.captured(1)));
        else if (match.capturedLength(2) > 0)
            objects.last().insert(match.captured(1));
    }
}

} // namespace

JsonNode::JsonNode(const QString &fileName, const QString &path, const QJsonValue &value)
    : m_fileName(fileName), m_path(path), m_value(value)
{}

JsonNode JsonNode::readFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw BasicException(u"%1: файл не прочитан: %2"_s.arg(fileName, file.errorString()));
    const QByteArray content = file.readAll();
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(content, &error);
    if (error.error != QJsonParseError::NoError) {
        const auto line = content.left(error.offset).count('\n') + 1;
        throw BasicException(u"%1: строка %2: не JSON: %3"_s.arg(fileName, QString::number(line), error.errorString()));
    }
    refuseRepeatedKeys(fileName, QString::fromUtf8(content));
    return {fileName, QString(), json.isArray() ? QJsonValue(json.array()) : QJsonValue(json.object())};
}

void JsonNode::requireObject(const QStringList &known) const
{
    for (const QString &key : keys()) {
        if (!known.contains(key))
            at(key).fail(u"неизвестный ключ; возможны: %1"_s.arg(known.join(u", "_s)));
    }
}

QStringList JsonNode::keys() const
{
    if (!m_value.isObject())
        fail(u"нужен объект"_s);
    return m_value.toObject().keys();
}

bool JsonNode::has(const QString &key) const
{
    return m_value.toObject().contains(key);
}

JsonNode JsonNode::at(const QString &key) const
{
    if (!has(key))
        fail(u"нет обязательного ключа \"%1\""_s.arg(key));
    return {m_fileName, m_path + u'/' + key, m_value.toObject().value(key)};
}

QList<JsonNode> JsonNode::items() const
{
    if (!m_value.isArray())
        fail(u"нужен массив"_s);
    QList<JsonNode> nodes;
    for (const QJsonValue item : m_value.toArray())
        nodes.append(JsonNode(m_fileName, m_path + u'/' + QString::number(nodes.size()), item));
    return nodes;
}

QString JsonNode::text() const
{
    if (anyText().isEmpty())
        fail(u"строка не может быть пустой"_s);
    return m_value.toString();
}

QString JsonNode::anyText() const
{
    if (!m_value.isString())
        fail(u"нужна строка"_s);
    return m_value.toString();
}

QString JsonNode::choice(const QStringList &known) const
{
    const QString chosen = text();
    if (!known.contains(chosen))
        fail(u"\"%1\" не подходит; возможны: %2"_s.arg(chosen, known.join(u", "_s)));
    return chosen;
}

bool JsonNode::flag() const
{
    if (!m_value.isBool())
        fail(u"нужно true или false"_s);
    return m_value.toBool();
}

int JsonNode::wholeNumber(int lowest, int highest) const
{
    const double number = m_value.toDouble(lowest - 1.0);
    if (number != std::floor(number) || number < lowest || number > highest)
        fail(u"нужно целое число от %1 до %2"_s.arg(QString::number(lowest), QString::number(highest)));
    return static_cast<int>(number);
}

Money JsonNode::amount() const
{
    static const QRegularExpression form(u"^\\d{1,9}(\\.\\d{1,2})?$"_s);
    if (m_value.isString() && form.match(m_value.toString()).hasMatch())
        return Money::fromRubles(m_value.toString().toDouble()); // QString::toDouble reads a point in every locale.
    const double rubles = m_value.toDouble(-1);
    if (rubles < 0 || rubles >= highestAmount || !isWhole(rubles * 100))
        fail(u"нужна сумма вида \"45.50\" или 45.50, не меньше нуля и без долей копейки"_s);
    return Money::fromRubles(rubles);
}

double JsonNode::quantity() const
{
    const double number = m_value.toDouble(0);
    if (number <= 0 || number > highestQuantity || !isWhole(number * 1000))
        fail(u"нужно количество больше нуля, не точнее тысячной"_s);
    return number;
}

QString JsonNode::place() const
{
    return u"%1: %2"_s.arg(m_fileName, m_path.isEmpty() ? u"/"_s : m_path);
}

void JsonNode::fail(const QString &reason) const
{
    throw BasicException(u"%1: %2"_s.arg(place(), reason));
}

} // namespace till
