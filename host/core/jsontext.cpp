// Writes JSON text through CBOR (RFC 8949). Most of the cost of writing a JSON object is that it returns its members
// one by one, each as a new QString. Qt stores JSON almost as CBOR and writes CBOR without that; CBOR strings are UTF-8
// with their length in front, so only copying is left. An order of 20 lines takes less than half the time of
// QJsonDocument::toJson().
#include <core/jsontext.h>

#include <QtCore/QCborStreamWriter>
#include <QtCore/QCborValue>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtCore/QtEndian>

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace jsontext {

namespace {

/// Collects what is written to it: thousands of pieces, most of them of one byte. Cheaper than QBuffer.
class Sink : public QIODevice
{
public:
    Sink()
    {
        constexpr qsizetype ordinarySize = 8192;
        makeRoom(ordinarySize);
        setOpenMode(WriteOnly | Unbuffered);
    }

    /// What has been written and, behind it, room for `padding` bytes.
    QByteArrayView bytes() const { return {m_bytes.constData(), m_at - m_bytes.constData()}; }

    static constexpr qsizetype padding = 8;

protected:
    bool isSequential() const override { return true; }
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        if (m_end - m_at < size)
            makeRoom(size);
        if (size == 1)
            *m_at = *data;
        else
            std::memcpy(m_at, data, static_cast<std::size_t>(size));
        m_at += size;
        return size;
    }

private:
    void makeRoom(qsizetype size)
    {
        const qsizetype used = m_bytes.isNull() ? 0 : bytes().size();
        m_bytes.resize(2 * used + size + padding);
        m_at = m_bytes.data() + used;
        m_end = m_bytes.data() + m_bytes.size() - padding;
    }

    QByteArray m_bytes;
    char *m_at = nullptr;
    const char *m_end = nullptr;
};

bool isEscaped(char character)
{
    return static_cast<uchar>(character) < ' ' || character == '"' || character == '\\';
}

/// Whether JSON escapes one of the characters. They are read eight at a time, so there must be room behind them.
bool hasEscaped(const char *text, qsizetype size)
{
    constexpr qsizetype wordSize = sizeof(quint64);
    static_assert(wordSize == Sink::padding);
    constexpr quint64 each = 0x0101'0101'0101'0101;
    constexpr quint64 highBits = each << 7;
    // Sets the high bit of the first byte that is less, and perhaps of those behind it.
    const auto less = [](quint64 word, uchar limit) { return (word - each * limit) & ~word; };
    const auto equal = [&less](quint64 word, uchar byte) { return less(word ^ (each * byte), 1); };
    for (; size > 0; text += wordSize, size -= wordSize) {
        const auto word = qFromLittleEndian<quint64>(text);
        quint64 found = (less(word, ' ') | equal(word, '"') | equal(word, '\\')) & highBits;
        if (size < wordSize)
            found &= (quint64{1} << (CHAR_BIT * size)) - 1;
        if (found != 0)
            return true;
    }
    return false;
}

/// Converts CBOR into JSON. Trusts its input, which always comes from Qt and holds what JSON can.
class Transcoder
{
public:
    explicit Transcoder(const Sink &cbor)
        : m_in(cbor.bytes().data()),
          m_json(largestGrowth * cbor.bytes().size(), Qt::Uninitialized),
          m_out(m_json.data())
    {}

    QByteArray text()
    {
        putItem();
        return {m_json.constData(), m_out - m_json.constData()};
    }

private:
    enum MajorType { Unsigned = 0, Negative = 1, Text = 3, Array = 4, Map = 5 };

    /// An escaped control character takes six bytes instead of one, and nothing grows more: not the numbers, and not
    /// the quotation marks, brackets and separators in the place of an item's head.
    static constexpr qsizetype largestGrowth = 6;

    /// The head of an item is one byte: its type, and a small number or the length of the number that follows.
    quint64 takeNumber(int low)
    {
        constexpr int firstThatFollows = 24;
        if (low < firstThatFollows)
            return static_cast<quint64>(low);
        quint64 number = 0;
        for (int left = 1 << (low - firstThatFollows); left > 0; --left)
            number = number << 8 | static_cast<uchar>(*m_in++);
        return number;
    }

    void putItem()
    {
        const auto head = static_cast<uchar>(*m_in++);
        const quint64 number = takeNumber(head & 0x1f);
        switch (head >> 5) {
        case Text:
            return putText(static_cast<qsizetype>(number));
        case Array:
            return putArray(number);
        case Map:
            return putMap(number);
        case Unsigned:
            return put(QByteArray::number(number));
        case Negative:
            return put(QByteArray::number(-1 - static_cast<qint64>(number)));
        default:
            putOther(head, number);
        }
    }

    void putArray(quint64 count)
    {
        *m_out++ = '[';
        for (quint64 i = 0; i < count; ++i) {
            if (i > 0)
                *m_out++ = ',';
            putItem();
        }
        *m_out++ = ']';
    }

    void putMap(quint64 count)
    {
        *m_out++ = '{';
        for (quint64 i = 0; i < count; ++i) {
            if (i > 0)
                *m_out++ = ',';
            putItem();
            *m_out++ = ':';
            putItem();
        }
        *m_out++ = '}';
    }

    void put(QByteArrayView bytes)
    {
        std::memcpy(m_out, bytes.data(), static_cast<std::size_t>(bytes.size()));
        m_out += bytes.size();
    }

    void putText(qsizetype size)
    {
        *m_out++ = '"';
        if (const QByteArrayView text(m_in, size); hasEscaped(m_in, size))
            putEscaped(text);
        else
            put(text);
        m_in += size;
        *m_out++ = '"';
    }

    void putEscaped(QByteArrayView text)
    {
        constexpr std::string_view named = "\"\\\b\f\n\r\t";
        constexpr std::string_view names = "\"\\bfnrt";
        constexpr std::string_view digits = "0123456789abcdef";
        for (const char character : text) {
            if (!isEscaped(character)) {
                *m_out++ = character;
                continue;
            }
            *m_out++ = '\\';
            if (const auto place = named.find(character); place != std::string_view::npos) {
                *m_out++ = names[place];
                continue;
            }
            put("u00");
            *m_out++ = digits[static_cast<uchar>(character) >> 4];
            *m_out++ = digits[character & 0xf];
        }
    }

    void putOther(uchar head, quint64 number)
    {
        constexpr uchar no = 0xf4;
        constexpr uchar yes = 0xf5;
        constexpr uchar floating = 0xfb;
        if (const auto value = std::bit_cast<double>(number); head == floating && std::isfinite(value))
            return put(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
        put(head == yes ? "true" : head == no ? "false" : "null");
    }

    const char *m_in;
    QByteArray m_json;
    char *m_out;
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
    Sink cbor;
    QCborStreamWriter writer(&cbor);
    write(writer);
    return Transcoder(cbor).text();
}

} // namespace jsontext
