// Writes JSON text through CBOR (RFC 8949). Most of the cost of writing a JSON object is that it returns its members
// one by one, each as a new QString. Qt stores JSON almost as CBOR and writes CBOR without that; CBOR strings are UTF-8
// with their length in front, so only copying is left. An order of 20 lines takes a third of the time of
// QJsonDocument::toJson(); member by member it would take four fifths.
#include <core/jsontext.h>

#include <QtCore/QCborStreamWriter>
#include <QtCore/QCborValue>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

namespace jsontext {

namespace {

constexpr std::array<bool, 256> escapedCharacters()
{
    std::array<bool, 256> table{};
    for (unsigned c = 0; c < table.size(); ++c)
        table[c] = c < ' ' || c == '"' || c == '\\';
    return table;
}

// A table, because the test is made for each character of a text.
constexpr std::array<bool, 256> isEscaped = escapedCharacters();

/// Converts the CBOR written to it into JSON. Trusts its input, which always comes from Qt and holds what JSON can.
class Transcoder : public QIODevice
{
public:
    Transcoder() { setOpenMode(WriteOnly | Unbuffered); }

    bool isSequential() const override { return true; }

    QByteArray text()
    {
        m_text.truncate(m_out - m_text.constData());
        return m_text;
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *data, qint64 size) override
    {
        std::string_view cbor(data, static_cast<std::size_t>(size));
        while (!cbor.empty())
            cbor.remove_prefix(m_textLeft > 0 ? takeText(cbor) : takeHead(static_cast<uchar>(cbor.front())));
        return size;
    }

private:
    enum MajorType { Unsigned = 0, Negative = 1, Text = 3, Array = 4, Map = 5 };

    /// An array or a map that is still open.
    struct Level
    {
        char close;
        quint64 left; ///< Items, in a map keys and values.
        bool isEmpty = true;
    };

    /// The head of an item is one byte: its type, and a small number or the length of the number that follows.
    std::size_t takeHead(uchar byte)
    {
        constexpr int firstThatFollows = 24;
        if (m_numberLeft > 0) {
            m_number = m_number << 8 | byte;
            --m_numberLeft;
        } else {
            const int low = byte & 0x1f;
            m_first = byte;
            m_number = low < firstThatFollows ? low : 0;
            m_numberLeft = low < firstThatFollows ? 0 : 1 << (low - firstThatFollows);
        }
        if (m_numberLeft == 0)
            putItem();
        return 1;
    }

    std::size_t takeText(std::string_view cbor)
    {
        const std::string_view text = cbor.substr(0, m_textLeft);
        putCharacters(text);
        m_textLeft -= text.size();
        if (m_textLeft == 0)
            endText();
        return text.size();
    }

    /// Writes a number or a literal, or starts an array, map or string.
    void putItem()
    {
        separate();
        switch (m_first >> 5) {
        case Array:
            return openLevel('[', {']', m_number});
        case Map:
            return openLevel('{', {'}', 2 * m_number});
        case Text:
            put('"');
            m_textLeft = m_number;
            if (m_textLeft == 0)
                endText();
            return;
        case Unsigned:
            putNumber(QByteArray::number(m_number));
            break;
        case Negative:
            putNumber(QByteArray::number(-1 - static_cast<qint64>(m_number)));
            break;
        default:
            putOther();
        }
        endItem();
    }

    void endText()
    {
        put('"');
        endItem();
    }

    void separate()
    {
        if (m_levels.empty())
            return;
        Level &level = m_levels.back();
        if (level.close == '}' && level.left % 2 == 1)
            put(':');
        else if (!level.isEmpty)
            put(',');
        level.isEmpty = false;
    }

    void openLevel(char character, const Level &level)
    {
        put(character);
        if (level.left > 0)
            return m_levels.push_back(level);
        put(level.close);
        endItem();
    }

    /// The last item of an array or map also ends that.
    void endItem()
    {
        while (!m_levels.empty() && --m_levels.back().left == 0) {
            put(m_levels.back().close);
            m_levels.pop_back();
        }
    }

    void putNumber(const QByteArray &number) { put({number.constData(), static_cast<std::size_t>(number.size())}); }

    void putCharacters(std::string_view text)
    {
        std::size_t copied = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (isEscaped[static_cast<uchar>(text[i])]) {
                put(text.substr(copied, i - copied));
                putEscaped(text[i]);
                copied = i + 1;
            }
        }
        put(text.substr(copied));
    }

    void putEscaped(char character)
    {
        constexpr std::string_view named = "\"\\\b\f\n\r\t";
        constexpr std::string_view names = "\"\\bfnrt";
        constexpr std::string_view digits = "0123456789abcdef";
        put('\\');
        if (const auto place = named.find(character); place != std::string_view::npos)
            return put(names[place]);
        put("u00");
        put(digits[static_cast<uchar>(character) >> 4]);
        put(digits[character & 0xf]);
    }

    void putOther()
    {
        constexpr uchar no = 0xf4;
        constexpr uchar yes = 0xf5;
        constexpr uchar floating = 0xfb;
        if (m_first == floating) {
            if (const auto number = std::bit_cast<double>(m_number); std::isfinite(number))
                return putNumber(QByteArray::number(number, 'g', QLocale::FloatingPointShortest));
        }
        put(m_first == yes ? "true" : m_first == no ? "false" : "null");
    }

    void put(char character)
    {
        if (m_out == m_end)
            grow(1);
        *m_out++ = character;
    }

    void put(std::string_view text)
    {
        if (const auto length = static_cast<qsizetype>(text.size()); m_end - m_out < length)
            grow(length);
        std::memcpy(m_out, text.data(), text.size());
        m_out += text.size();
    }

    void grow(qsizetype least)
    {
        constexpr qsizetype atFirst = 4096; // an order of 20 lines
        constexpr qsizetype factor = 4;     // large texts are copied less often than with the usual 2
        const qsizetype used = m_out ? m_out - m_text.constData() : 0;
        m_text.resize(factor * used + std::max(atFirst, least));
        m_out = m_text.data() + used;
        m_end = m_text.data() + m_text.size();
    }

    uchar m_first = 0;      // first byte of the current item's head
    quint64 m_number = 0;   // the number in that head, as far as read
    int m_numberLeft = 0;   // bytes of it still to come
    quint64 m_textLeft = 0; // bytes of the current string still to come
    std::vector<Level> m_levels;
    QByteArray m_text;
    char *m_out = nullptr;
    char *m_end = nullptr;
};

} // namespace

QByteArray compact(const QJsonDocument &json)
{
    if (json.isNull())
        return {};
    const QJsonValue top = json.isArray() ? QJsonValue(json.array()) : QJsonValue(json.object());
    return compact([&](QCborStreamWriter &writer) { QCborValue::fromJsonValue(top).toCbor(writer); });
}

QByteArray compact(const std::function<void(QCborStreamWriter &)> &write)
{
    Transcoder transcoder;
    QCborStreamWriter writer(&transcoder);
    write(writer);
    return transcoder.text();
}

} // namespace jsontext
