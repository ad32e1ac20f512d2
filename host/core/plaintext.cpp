// Filters texts from outside. A control string (such as a window title) without a terminator ends with its line, so
// that the rest of the text is still shown.
#include <core/plaintext.h>

#include <QtCore/QChar>

namespace {

constexpr char16_t escape = 0x1B;

enum class CharacterKind { Kept, Space, LeftOut };

bool isLineEnd(char32_t c)
{
    return (c >= 0x0A && c <= 0x0D) || (c >= 0x1C && c <= 0x1E) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

CharacterKind kindOf(char32_t c)
{
    if (c > 0x20 && c < 0x7F)
        return CharacterKind::Kept;
    if (c == u'\t' || isLineEnd(c))
        return CharacterKind::Space;
    switch (QChar::category(c)) {
    case QChar::Separator_Space:
        return CharacterKind::Space;
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
        return CharacterKind::LeftOut;
    default:
        return CharacterKind::Kept;
    }
}

// The first position, starting at `at`, whose character is not between `low` and `high`.
qsizetype skip(QStringView text, qsizetype at, char16_t low, char16_t high)
{
    while (at < text.size() && text[at] >= low && text[at] <= high)
        ++at;
    return at;
}

// Skips one final character between `low` and '~', if there is one.
qsizetype withFinal(QStringView text, qsizetype at, char16_t low)
{
    return at < text.size() && text[at] >= low && text[at] <= u'~' ? at + 1 : at;
}

qsizetype controlStringEnd(QStringView text, qsizetype at)
{
    for (; at < text.size(); ++at) {
        const char16_t c = text[at].unicode();
        if (c == 0x07 || c == 0x9C)
            return at + 1;
        if (c == escape)
            return at + 1 < text.size() && text[at + 1] == u'\\' ? at + 2 : at;
        if (isLineEnd(c))
            return at;
    }
    return at;
}

// The length of the escape sequence at the beginning of `text`; 0 if there is none.
qsizetype escapeLength(QStringView text)
{
    char16_t introducer = text[0].unicode();
    qsizetype at = 1;
    if (introducer == escape) {
        // "ESC [" and the like are the seven-bit forms of the characters 0x80 to 0x9F.
        if (text.size() == 1 || text[1] < u'@' || text[1] > u'_')
            return withFinal(text, skip(text, at, u' ', u'/'), u'0');
        introducer = text[1].unicode() + 0x40;
        at = 2;
    }
    switch (introducer) {
    case 0x9B:
        return withFinal(text, skip(text, at, u' ', u'?'), u'@');
    case 0x90:
    case 0x98:
    case 0x9D:
    case 0x9E:
    case 0x9F:
        return controlStringEnd(text, at);
    default:
        return at == 2 ? at : 0;
    }
}

void cut(QString &text, qsizetype maxLength)
{
    text.truncate(qMax(maxLength - 1, qsizetype{0}));
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
    if (maxLength > 0)
        text += u'…';
}

} // namespace

QString plainText(QStringView text, qsizetype maxLength)
{
    QString result;
    result.reserve(qMin(text.size(), maxLength + 2));
    bool spaceBefore = false;
    for (qsizetype at = 0; at < text.size();) {
        if (const qsizetype length = escapeLength(text.sliced(at))) {
            at += length;
            continue;
        }
        const bool pair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        const QStringView character = text.sliced(at, pair ? 2 : 1);
        at += character.size();
        const CharacterKind kind =
            kindOf(pair ? QChar::surrogateToUcs4(character[0], character[1]) : character[0].unicode());
        spaceBefore = spaceBefore || kind == CharacterKind::Space;
        if (kind != CharacterKind::Kept)
            continue;
        if (spaceBefore && !result.isEmpty())
            result += u' ';
        spaceBefore = false;
        result += character;
        if (result.size() > maxLength) {
            cut(result, maxLength);
            break;
        }
    }
    return result;
}
