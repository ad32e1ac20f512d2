// The receipt's text, whatever the locale.
#include "tests/support/commalocale.h"
#include "till/receipt.h"

#include <gtest/gtest.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QTimeZone>

using namespace Qt::Literals::StringLiterals;

namespace {

TEST(Receipt, HasItsColumnsAndTwoDecimalsInEveryLocale)
{
    const CommaLocale locale;
    const QDateTime opened({2026, 3, 5}, {14, 3, 9});
    const till::CheckResult result{u"c0ffee00-0000-4000-8000-000000000001"_s,
                                   opened,
                                   u"closed"_s,
                                   {{1, u"Сыр Российский особый весовой с длинным названием на ценнике"_s, 0.345,
                                     Money::fromKopecks(64000), Money::fromKopecks(22080), Money::fromKopecks(11040)},
                                    {3, u"Хлеб"_s, 2, Money::fromKopecks(4550), Money::fromKopecks(9100), Money()}},
                                   u"7770000000001"_s,
                                   u"b-1"_s,
                                   u"Константинопольская-Преображенская Александра Владимировна"_s,
                                   u"Золото"_s,
                                   Money::fromKopecks(123456789),
                                   Money::fromKopecks(5),
                                   {}};
    const char *expected = "==========================================\n"
                           "               КАССОВЫЙ ЧЕК\n"
                           "Открыт                 05.03.2026 14:03:09\n"
                           "N     c0ffee00-0000-4000-8000-000000000001\n"
                           "------------------------------------------\n"
                           "Сыр Российский особый весовой с длинным\n"
                           "названием на ценнике\n"
                           "  0.345 x 640.00                    220.80\n"
                           "  Скидка баллами                   -110.40\n"
                           "Хлеб\n"
                           "  2 x 45.50                          91.00\n"
                           "------------------------------------------\n"
                           "Сумма                               311.80\n"
                           "Скидка баллами                     -110.40\n"
                           "ИТОГО                               201.40\n"
                           "------------------------------------------\n"
                           "Карта                        7770000000001\n"
                           "Покупатель\n"
                           "        Константинопольская-Преображенская\n"
                           "                   Александра Владимировна\n"
                           "Уровень                             Золото\n"
                           "Баланс баллов до чека           1234567.89\n"
                           "Списано баллов                      110.40\n"
                           "Начислено баллов                      0.05\n"
                           "Баланс после чека (ожидается)   1234457.54\n"
                           "------------------------------------------\n"
                           "Ожидает отправки                         2\n"
                           "В очереди с            05.03.2026 14:03:09\n"
                           "==========================================\n";
    EXPECT_EQ(till::receiptText(result, {2, 0, opened}).toStdString(), expected);
}

TEST(Receipt, KeepsTextsFromOutsideInTheirPlace)
{
    const QString hostile = u"X\nИТОГО 0.00\u2028ИТОГО 0.00\x1b[2J\u202e"_s;
    const QString endless(1'000'000, u'Ы');
    for (const QString &text : {hostile, endless}) {
        const till::CheckResult result{text, {}, u"closed"_s, {{1, text, 1, {}, {}, {}}}, text, u"b-1"_s, text, text,
                                       {},   {}, text};
        const QStringList rows = till::receiptText(result, {}).split(u'\n');
        EXPECT_LT(rows.size(), 50);
        EXPECT_EQ(rows.filter(QRegularExpression(u"^ИТОГО"_s)).size(), 1);
        for (const QString &row : rows) {
            EXPECT_LE(row.size(), till::receiptWidth);
            EXPECT_FALSE(row.contains(QRegularExpression(u"[\\p{Cc}\\p{Cf}\u2028]"_s))) << row.toStdString();
        }
    }
}

} // namespace
