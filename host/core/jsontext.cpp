// JSON text by way of CBOR. A JSON object gives its members one by one and each as a new QString, which is most of
// what writing it costs. Qt keeps JSON in memory almost as CBOR (RFC 8949) and writes that without, and CBOR has its
// texts in UTF-8 with their lengths before them: what is left to do is copying. An order of 20 lines takes a third of
// the time of QJsonDocument::toJson(); members one by one would take two thirds.
#include <core/jsontext.h>

#include <QtCore/QCborStreamWriter>
#include <QtCore/QCborValue>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>

#include <bit>
#include <cmath>
#include <cstring>
#include <string_view>

namespace jsontext {

namespace {

/// Takes what is written. The QBuffer that Qt would take for it needs as long as all the rest of writing CBOR.
class Sink : public QIODevice
{
public:
    Sink() { setOpenMode(WriteOnly | Unbuffered); }

    bool isSequential() const override { return true; }

    std::string bytes;

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *data, qint64 size) override
    {
        bytes.append(data, static_cast<std::size_t>(size));
        return size;
    }
};

/// Makes JSON of the CBOR that Qt has made of a JSON document. Nobody else's CBOR comes here, so it is not doubted.
class Transcoder
{
public:
    explicit Transcoder(std::string_view cbor) : m_in(cbor.data())
    {
        grow(static_cast<qsizetype>(cbor.size() + cbor.size() / 2));
    }
    Q_DISABLE_COPY_MOVE(Transcoder)

    QByteArray text()
    {
        putItem();
        m_text.truncate(m_out - m_text.constData());
        return m_text;
    }

private:
    enum MajorType { Unsigned = 0, Negative = 1, Text = 3, Array = 4, Map = 5 };

    void grow(qsizetype least)
    {
        const qsizetype used = m_text.isEmpty() ? 0 : m_out - m_text.constData();
        m_text.resize(2 * m_text.size() + least);
        m_out = m_text.data() + used;
        m_end = m_text.data() + m_text.size();
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

    void putItem()
    {
        const auto first = static_cast<uchar>(*m_in++);
        switch (first >> 5) {
        case Unsigned:
            return putNumber(QByteArray::number(argument(first)));
        case Negative:
            return putNumber(QByteArray::number(-1 - static_cast<qint64>(argument(first))));
        case Text:
            return putText(argument(first));
        case Array:
            return putAll('[', argument(first), ']', [this] { putItem(); });
        case Map:
            return putAll('{', argument(first), '}', [this] {
                putItem();
                put(':');
                putItem();
            });
        default:
            return putOther(first);
        }
    }

    /// The number in an item's first byte, or in the bytes behind it.
    quint64 argument(uchar first)
    {
        constexpr int firstThatFollows = 24;
        const int low = first & 0x1f;
        if (low < firstThatFollows)
            return low;
        quint64 number = 0;
        for (int left = 1 << (low - firstThatFollows); left > 0; --left)
            number = number << 8 | static_cast<uchar>(*m_in++);
        return number;
    }

    template <class PutMember>
    void putAll(char open, quint64 count, char close, const PutMember &putMember)
    {
        put(open);
        for (quint64 i = 0; i < count; ++i) {
            if (i > 0)
                put(',');
            putMember();
        }
        put(close);
    }

    void putNumber(const QByteArray &number) { put({number.constData(), static_cast<std::size_t>(number.size())}); }

    void putText(quint64 length)
    {
        const std::string_view text(m_in, length);
        m_in += length;
        put('"');
        std::size_t copied = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (const auto c = static_cast<uchar>(text[i]); c < ' ' || c == '"' || c == '\\') {
                put(text.substr(copied, i - copied));
                putEscaped(text[i]);
                copied = i + 1;
            }
        }
        put(text.substr(copied));
        put('"');
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

    void putOther(uchar first)
    {
        constexpr uchar no = 0xf4;
        constexpr uchar yes = 0xf5;
        constexpr uchar floating = 0xfb;
        if (first == floating) {
            if (const auto number = std::bit_cast<double>(argument(first)); std::isfinite(number))
                return putNumber(QByteArray::number(number, 'g', QLocale::FloatingPointShortest));
        }
        put(first == yes ? "true" : first == no ? "false" : "null");
    }

    const char *m_in;
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
    Sink cbor;
    QCborStreamWriter writer(&cbor);
    QCborValue::fromJsonValue(top).toCbor(writer);
    return Transcoder(cbor.bytes).text();
}

} // namespace jsontext
