// Values straight into the text, in one pass. What is not an everyday value is left to the library.
#include "jsonwriter.h"

#include <core/jsontext.h>
#include <core/serder.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

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

} // namespace

QVariantMap JsonWriter::toMap(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object().toVariantMap();
}

void JsonWriter::name(QLatin1StringView name)
{
    separate();
    append('"');
    append(name);
    append("\":");
}

void JsonWriter::name(const QString &name)
{
    separate();
    write(name);
    append(':');
}

void JsonWriter::write(bool value)
{
    append(value ? "true" : "false");
}

void JsonWriter::write(qint64 value)
{
    constexpr qsizetype longest = 20; // "-9223372036854775808"
    char *const out = room(longest);
    m_size += std::to_chars(out, out + longest, value).ptr - out;
}

void JsonWriter::write(double value)
{
    constexpr qsizetype longest = 32; // "-1.7976931348623157e+308"
    if (!std::isfinite(value))
        return append("null");
    char *const out = room(longest);
    m_size += std::to_chars(out, out + longest, value).ptr - out;
}

void JsonWriter::write(const QString &value)
{
    constexpr qsizetype longestCharacter = 3;
    char *const begin = room(longestCharacter * value.size() + 2);
    *begin = '"';
    char *const end = appendPlainText(begin + 1, value);
    if (!end)
        return writeByLibrary(value);
    *end = '"';
    m_size += end + 1 - begin;
}

// A check is saved with a hundred times, nearly all of them the time of the service's last answer. To write one out
// takes 2 microseconds.
void JsonWriter::write(const QDateTime &value)
{
    if (m_lastTimeText.isNull() || !isSame(value, m_lastTime)) {
        m_lastTime = value;
        m_lastTimeText = '"' + value.toString(Qt::ISODateWithMs).toLatin1() + '"';
    }
    append(m_lastTimeText);
}

void JsonWriter::write(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return append("null");
    case QMetaType::Bool:
        return write(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong:
        return write(value.toLongLong());
    case QMetaType::Double:
        return write(value.toDouble());
    case QMetaType::QString:
        return write(*static_cast<const QString *>(value.constData()));
    case QMetaType::QVariantMap:
        return write(*static_cast<const QVariantMap *>(value.constData()));
    case QMetaType::QVariantList:
        return write(*static_cast<const QVariantList *>(value.constData()));
    case QMetaType::QJsonObject:
        return write(*static_cast<const QJsonObject *>(value.constData()));
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return writeByLibrary(value);
    default:
        return write(serder::toPlain(value)); // One of the above.
    }
}

void JsonWriter::write(const QVariantMap &value)
{
    writeObject([&] {
        for (auto entry = value.cbegin(); entry != value.cend(); ++entry)
            add(entry.key(), entry.value());
    });
}

void JsonWriter::write(const QVariantList &value)
{
    append('[');
    for (const QVariant &element : value) {
        separate();
        write(element);
    }
    append(']');
}

void JsonWriter::write(const QJsonObject &value)
{
    append(jsontext::compact(QJsonDocument(value)));
}

void JsonWriter::writeByLibrary(const QVariant &value)
{
    const QByteArray array = QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)}).toJson(QJsonDocument::Compact);
    append(QByteArrayView(array).sliced(1, array.size() - 2));
}

void JsonWriter::separate()
{
    // Texts end in a quotation mark, so that a bracket here has just been opened.
    if (const char last = m_text.at(m_size - 1); last != '{' && last != '[')
        append(',');
}

void JsonWriter::append(QByteArrayView text)
{
    std::memcpy(room(text.size()), text.data(), static_cast<std::size_t>(text.size()));
    m_size += text.size();
}

void JsonWriter::append(char character)
{
    *room(1) = character;
    ++m_size;
}

char *JsonWriter::room(qsizetype longest)
{
    constexpr qsizetype usualSize = 32768; // A check of 20 lines takes two thirds of it.
    if (m_text.size() - m_size < longest)
        m_text.resize(std::max(usualSize, 2 * (m_size + longest)));
    return m_text.data() + m_size;
}
