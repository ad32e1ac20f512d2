// Splits CSV byte by byte: separators, quotes and line ends are single bytes in UTF-8.
#include "csvreader.h"

#include <QtCore/QStringDecoder>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Without a bound, each stray quote of a large file would be searched for to the end of the file.
constexpr qsizetype longestQuoted = 100'000;

char mostFrequentSeparator(const QByteArray &data)
{
    constexpr QByteArrayView separators(",;\t");
    std::array<int, 3> counts{};
    bool quoted = false;
    for (const char character : data) {
        if (character == '"')
            quoted = !quoted;
        if (!quoted && (character == '\n' || character == '\r'))
            break;
        if (const qsizetype index = separators.indexOf(character); !quoted && index >= 0)
            ++counts.at(static_cast<std::size_t>(index));
    }
    return separators[std::max_element(counts.begin(), counts.end()) - counts.begin()];
}

class Reader
{
public:
    explicit Reader(const QByteArray &data) : m_data(data), m_separator(mostFrequentSeparator(data)) {}

    bool skipBlankLines()
    {
        while (atLineEnd() && !atEnd())
            skipLineEnd();
        return !atEnd();
    }

    CsvRecord next()
    {
        CsvRecord record{.line = m_line, .fields = {}, .fault = {}};
        const qsizetype begin = m_position;
        do {
            record.fields.append(field(record.fault));
        } while (record.fault.isEmpty() && skip(m_separator));
        if (!record.fault.isEmpty()) {
            m_position = begin;
            m_line = record.line;
            while (!atLineEnd())
                ++m_position;
        }
        skipLineEnd();
        return record;
    }

private:
    bool atEnd() const { return m_position >= m_data.size(); }
    bool atLineEnd() const { return atEnd() || m_data[m_position] == '\n' || m_data[m_position] == '\r'; }

    bool skip(char character)
    {
        const bool found = !atEnd() && m_data[m_position] == character;
        m_position += found ? 1 : 0;
        return found;
    }

    /// The end may be that of Unix, Windows or an old spreadsheet: LF, CR LF or CR.
    void skipLineEnd()
    {
        if (!atEnd())
            ++m_line;
        skip('\r');
        skip('\n');
    }

    QString field(QString &fault)
    {
        const QByteArray bytes = skip('"') ? quoted(fault) : plain();
        QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decode(bytes);
        if (decode.hasError())
            fault = u"not UTF-8; save the file in that encoding"_s;
        return text;
    }

    QByteArray plain()
    {
        const qsizetype begin = m_position;
        while (!atLineEnd() && m_data[m_position] != m_separator)
            ++m_position;
        return m_data.sliced(begin, m_position - begin);
    }

    /// From behind the opening quote to behind the closing one.
    QByteArray quoted(QString &fault)
    {
        QByteArray text;
        while (!atEnd() && text.size() < longestQuoted) {
            const char character = m_data[m_position++];
            if (character == '\n' || (character == '\r' && (atEnd() || m_data[m_position] != '\n')))
                ++m_line;
            if (character == '"' && !skip('"')) {
                if (!atLineEnd() && m_data[m_position] != m_separator)
                    fault = u"text after a closing quote"_s;
                return text;
            }
            text += character;
        }
        fault = u"a quoted field does not end"_s;
        return text;
    }

    const QByteArray &m_data;
    char m_separator;
    qsizetype m_position = 0;
    int m_line = 1;
};

} // namespace

QList<CsvRecord> readCsv(const QByteArray &data)
{
    const QByteArray text = data.startsWith("\xEF\xBB\xBF") ? data.sliced(3) : data;
    Reader reader(text);
    QList<CsvRecord> records;
    while (reader.skipBlankLines())
        records.append(reader.next());
    return records;
}

} // namespace till
