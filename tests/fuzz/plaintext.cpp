// Texts from outside: what is shown of them is short, and as it is the second time.
#include "fuzz.h"

#include <core/plaintext.h>

void fuzz(const QByteArray &input)
{
    constexpr qsizetype length = 40;
    const QString plain =
        plainText(QString::fromUtf16(reinterpret_cast<const char16_t *>(input.constData()), input.size() / 2), length);
    require(plain.size() <= length && plainText(plain, length) == plain);
    require(plainText(QString::fromUtf8(input), length).size() <= length);
}
