// Texts from outside: what they may not do to a receipt, a terminal or a log.

#include "tests/support/test.h"

#include <core/plaintext.h>

TEST(PlainText, KeepsWordsAndNothingThatCommands)
{
    const std::pair<QString, QString> cases[] = {
        {u"Иванова Мария 😀 e\u0301"_s, u"Иванова Мария 😀 e\u0301"_s},
        {u" a\t \u00A0 b\n"_s, u"a b"_s},
        {u"1\n2\r3\v4\f5\u001C6\u00857\u20288\u2029"_s, u"1 2 3 4 5 6 7 8"_s},
        {u"a\0b\u0007c\u007Fd\u009Ae"_s, u"abcde"_s},
        {u"a\u202Eb\u2066c\u2069d\u200Fe\uFEFFf\U000E0041g"_s, u"abcdefg"_s},
        {u"a\x1b[1;31mb\x1b[2Jc\u009B5nd\x1b(Be\x1bMf"_s, u"abcdef"_s},
        {u"a\x1b]0;title\ab\x1b]8;;http://x\x1b\\c\x1bPq\u009Cd"_s, u"abcd"_s},
        {u"a\x1b]0;title nobody ends\nb"_s, u"a b"_s},
        {u"a\x1b[\x1b[31mb\x1b"_s, u"ab"_s},
        {u"a\xD83D"_s + u'b' + QChar(0xDE00), u"ab"_s},
    };
    for (const auto &[text, plain] : cases)
        EXPECT_EQ(plainText(text, 100), plain);
}

TEST(PlainText, CutsToItsPlaceBetweenCharacters)
{
    EXPECT_EQ(plainText(u"abcd", 4), u"abcd"_s);
    EXPECT_EQ(plainText(u"abcde", 4), u"abc…"_s);
    EXPECT_EQ(plainText(u"ab😀de", 4), u"ab…"_s);
    EXPECT_EQ(plainText(u"ab", 0), QString());
    EXPECT_EQ(plainText(QString(10'000'000, u'\x1b') + u"\nx"_s, 9), u"x"_s);
}
