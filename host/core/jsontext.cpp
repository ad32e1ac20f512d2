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

#include <bit>
#include <cmath>
#include <string>
#include <string_view>

namespace jsontext {

namespace {

/// Collects what is written to it; cheaper than QBuffer.
class Sink : public QIODevice
{
public:
    Sink() { setOpenMode(WriteOnly | Unbuffered); }

    std::string bytes;

protected:
    bool isSequential() const override { return true; }
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        bytes.append(data, static_cast<std::size_t>(size));
        return size;
    }
};

/// Converts CBOR into JSON. Trusts its input, which always comes from Qt and holds what JSON can.
class Transcoder
{
public:
    explicit Transcoder(std::string_view cbor) : m_cbor(cbor) { m_json.reserve(2 * m_cbor.size()); }

    QByteArray text()
    {
        putItem();
        return QByteArray::fromStdString(m_json);
    }

private:
    enum MajorType { Unsigned = 0, Negative = 1, Text = 3, Array = 4, Map = 5 };

    std::string_view take(std::size_t size)
    {
        const std::string_view bytes = m_cbor.substr(0, size);
        m_cbor.remove_prefix(size);
        return bytes;
    }

    /// The head of an item is one byte: its type, and a small number or the length of the number that follows.
    quint64 takeNumber(int low)
    {
        constexpr int firstThatFollows = 24;
        if (low < firstThatFollows)
            return static_cast<quint64>(low);
        quint64 number = 0;
        for (const char byte : take(std::size_t{1} << (low - firstThatFollows)))
            number = number << 8 | static_cast<uchar>(byte);
        return number;
    }

    void putItem()
    {
        const auto head = static_cast<uchar>(take(1).front());
        const quint64 number = takeNumber(head & 0x1f);
        switch (head >> 5) {
        case Array:
            return putItems("[]", number);
        case Map:
            return putItems("{}", number);
        case Text:
            return putText(take(number));
        case Unsigned:
            return putNumber(QByteArray::number(number));
        case Negative:
            return putNumber(QByteArray::number(-1 - static_cast<qint64>(number)));
        default:
            putOther(head, number);
        }
    }

    void putItems(std::string_view brackets, quint64 count)
    {
        m_json += brackets.front();
        for (quint64 i = 0; i < count; ++i) {
            if (i > 0)
                m_json += ',';
            if (brackets.front() == '{') {
                putItem();
                m_json += ':';
            }
            putItem();
        }
        m_json += brackets.back();
    }

    void putNumber(const QByteArray &number)
    {
        m_json += std::string_view(number.constData(), static_cast<std::size_t>(number.size()));
    }

    void putText(std::string_view text)
    {
        m_json += '"';
        std::size_t copied = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (static_cast<uchar>(text[i]) < ' ' || text[i] == '"' || text[i] == '\\') {
                m_json += text.substr(copied, i - copied);
                putEscaped(text[i]);
                copied = i + 1;
            }
        }
        m_json += text.substr(copied);
        m_json += '"';
    }

    void putEscaped(char character)
    {
        constexpr std::string_view named = "\"\\\b\f\n\r\t";
        constexpr std::string_view names = "\"\\bfnrt";
        constexpr std::string_view digits = "0123456789abcdef";
        m_json += '\\';
        if (const auto place = named.find(character); place != std::string_view::npos) {
            m_json += names[place];
            return;
        }
        m_json += "u00";
        m_json += digits[static_cast<uchar>(character) >> 4];
        m_json += digits[character & 0xf];
    }

    void putOther(uchar head, quint64 number)
    {
        constexpr uchar no = 0xf4;
        constexpr uchar yes = 0xf5;
        constexpr uchar floating = 0xfb;
        if (const auto value = std::bit_cast<double>(number); head == floating && std::isfinite(value))
            return putNumber(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
        m_json += head == yes ? "true" : head == no ? "false" : "null";
    }

    std::string_view m_cbor;
    std::string m_json;
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
    return Transcoder(cbor.bytes).text();
}

} // namespace jsontext
