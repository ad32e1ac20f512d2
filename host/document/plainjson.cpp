// One pass over the variants, straight into the text. What is not an everyday value is left to the library.
#include "plainjson.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace {

QByteArray byLibrary(const QVariant &value)
{
    const QByteArray array = QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

// As UTF-8 from `out` on; returns its end, or null where a character has to be escaped or is half of one.
char *appendPlainText(char *out, const QString &text)
{
    for (const QChar character : text) {
        const char16_t c = character.unicode();
        if (c < u' ' || c == u'"' || c == u'\\' || character.isSurrogate())
            return nullptr;
        if (c < 0x80) {
            *out++ = static_cast<char>(c);
            continue;
        }
        if (c < 0x800) {
            *out++ = static_cast<char>(0xc0 | c >> 6);
        } else {
            *out++ = static_cast<char>(0xe0 | c >> 12);
            *out++ = static_cast<char>(0x80 | (c >> 6 & 0x3f));
        }
        *out++ = static_cast<char>(0x80 | (c & 0x3f));
    }
    return out;
}

// Straight into the buffer: most of the time went into making a QByteArray, or an encoder, for each text.
void appendText(QByteArray &json, const QString &text)
{
    constexpr qsizetype longestCharacter = 3;
    const qsizetype begin = json.size();
    json.resize(begin + longestCharacter * text.size() + 2);
    char *out = json.data() + begin;
    *out++ = '"';
    out = appendPlainText(out, text);
    if (out)
        *out++ = '"';
    json.truncate(out ? out - json.constData() : begin);
    if (!out)
        json += byLibrary(text);
}

template <class Number>
void appendNumber(QByteArray &json, Number number)
{
    constexpr std::size_t longest = 32; // "-1.7976931348623157e+308"
    std::array<char, longest> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    json.append(text.data(), end - text.data());
}

void append(QByteArray &json, const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const auto &map = *static_cast<const QVariantMap *>(value.constData());
        char separator = '{';
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
            json += std::exchange(separator, ',');
            appendText(json, entry.key());
            json += ':';
            append(json, entry.value());
        }
        json += map.isEmpty() ? "{}" : "}";
        return;
    }
    case QMetaType::QVariantList: {
        const auto &list = *static_cast<const QVariantList *>(value.constData());
        char separator = '[';
        for (const QVariant &element : list) {
            json += std::exchange(separator, ',');
            append(json, element);
        }
        json += list.isEmpty() ? "[]" : "]";
        return;
    }
    case QMetaType::QString:
        return appendText(json, *static_cast<const QString *>(value.constData()));
    case QMetaType::Int:
    case QMetaType::LongLong:
        return appendNumber(json, value.toLongLong());
    case QMetaType::Double:
        if (!std::isfinite(value.toDouble()))
            break;
        return appendNumber(json, value.toDouble());
    case QMetaType::Bool:
        json += value.toBool() ? "true" : "false";
        return;
    case QMetaType::UnknownType:
        json += "null";
        return;
    default:
        break;
    }
    json += byLibrary(value);
}

} // namespace

QByteArray toJsonText(const QVariantMap &map)
{
    constexpr qsizetype usualSize = 32768; // of a check of 20 lines
    QByteArray json;
    json.reserve(usualSize);
    append(json, map);
    return json;
}
