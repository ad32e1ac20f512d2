// Tells the service's JSON from what portals, proxies and faults put in its place. Damaged JSON does not count as plain
// text: it may have been a refusal.
#include "answer.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// Qt spends up to 40 bytes on a value and about 200 on an array or an object, however short their text is. An answer
// about 5,000 lines needs a quarter of these limits.
constexpr qsizetype maxValues = 200'000;
constexpr qsizetype maxContainers = 40'000;
constexpr int maxDepth = 64;

bool takesTooMuch(const QByteArray &json)
{
    qsizetype values = 0;
    qsizetype containers = 0;
    int depth = 0;
    bool quoted = false;
    for (qsizetype at = 0; at < json.size(); ++at) {
        const char c = json[at];
        if (c == '"') {
            quoted = !quoted;
        } else if (quoted) {
            at += c == '\\' ? 1 : 0;
        } else if (c == ',' || c == ':') {
            ++values;
        } else if (c == '[' || c == '{') {
            ++containers;
            ++depth;
        } else if (c == ']' || c == '}') {
            --depth;
        }
        if (values > maxValues || containers > maxContainers || depth > maxDepth)
            return true;
    }
    return false;
}

QString faultOf(const QJsonParseError &error)
{
    const QString offset = QString::number(error.offset);
    switch (error.error) {
    case QJsonParseError::IllegalNumber:
        return u"число вне допустимого диапазона, позиция %1"_s.arg(offset);
    case QJsonParseError::IllegalUTF8String:
        return u"текст не в UTF-8, позиция %1"_s.arg(offset);
    default:
        return u"JSON повреждён, позиция %1"_s.arg(offset);
    }
}

Answer readJson(const QByteArray &body)
{
    if (takesTooMuch(body))
        return {.kind = Answer::Unreadable, .fault = u"слишком много значений или уровней вложенности"_s};
    QJsonParseError error{};
    QJsonDocument json = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return {.kind = Answer::Unreadable, .fault = faultOf(error)};
    return {.kind = Answer::Json, .json = std::move(json)};
}

bool isText(const QByteArray &body)
{
    return std::none_of(body.cbegin(), body.cend(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r' && c != '\f';
    });
}

} // namespace

Answer readAnswer(const QByteArray &body)
{
    const QByteArrayView byteOrderMark = "\xEF\xBB\xBF";
    const qsizetype start = body.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    const QByteArray text = QByteArray::fromRawData(body.constData() + start, body.size() - start).trimmed();
    if (text.isEmpty())
        return {};
    if (text.startsWith('{') || text.startsWith('['))
        return readJson(text);
    if (text.startsWith('<'))
        return {.kind = Answer::Unreadable, .fault = u"страница HTML или XML"_s};
    if (!isText(text))
        return {.kind = Answer::Unreadable, .fault = u"двоичные данные"_s};
    return {.kind = Answer::Text};
}
