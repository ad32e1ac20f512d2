// The receipt's text, whatever the locale and whatever stands in names and numbers.
#include "tests/support/commalocale.h"
#include "tests/support/test.h"
#include "till/checkview.h"
#include "till/receipt.h"

namespace {

TEST(Receipt, HasItsColumnsAndTwoDecimalsInEveryLocale)
{
    const CommaLocale locale;
    const QDateTime opened({2026, 3, 5}, {14, 3, 9});
    till::CheckResult result{u"c0ffee00-0000-4000-8000-000000000001"_s,
                             opened,
                             u"closed"_s,
                             {{1, u"Сыр Российский\u2028особый весовой с длинным названием на ценнике"_s, 0.345,
                               Money::fromKopecks(64000), Money::fromKopecks(22080), Money::fromKopecks(11040)},
                              {3, u"Хлеб"_s, 2, Money::fromKopecks(4550), Money::fromKopecks(9100), Money()}},
                             u"\x1b[2J7770000000001\u202e"_s,
                             u"b-1"_s,
                             u"Константинопольская-Преображенская\nАлександра Владимировна"_s,
                             u"Золото"_s,
                             Money::fromKopecks(123456789),
                             Money::fromKopecks(5),
                             {},
                             {},
                             u"Петрова\nА. П."_s};
    const char *expected = "==========================================\n"
                           "               КАССОВЫЙ ЧЕК\n"
                           "Открыт                 05.03.2026 14:03:09\n"
                           "N     c0ffee00-0000-4000-8000-000000000001\n"
                           "Кассир                       Петрова А. П.\n"
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
    EXPECT_EQ(till::receiptText(till::resultFromJournal(result.toJournal()), {2, 0, opened}).toStdString(), expected);
    EXPECT_TRUE(till::checkView(result).contains(u", баланс 1234567.89\nИтого "_s)) << "changed since it was priced";
    result.isPriced = true;
    EXPECT_EQ(
        till::checkView(result),
        u"Чек открыт 05.03.2026 14:03:09\n1. Сыр Российский особый весовой с длинным…  0.345 x 640.00 = 220.80, "
        "баллами 110.40\n3. Хлеб  2 x 45.50 = 91.00\nКарта *********0001, Константинопольская-Преображенская Алек…, "
        "Золото, баланс 1234567.89, будет начислено 0.05\nИтого 201.40 (баллами 110.40)\n"_s);
    result.outcome = u"voided"_s;
    EXPECT_THAT(till::receiptText(result, {0, 3, opened}).toStdString(),
                AllOf(HasSubstr("ЧЕК АННУЛИРОВАН\n"), HasSubstr("Отклонено                                3\n")));
}

TEST(CheckView, TellsHowKeptChecksStand)
{
    using Standing = CheckStore::Standing;
    const QDateTime since({2026, 3, 5}, {14, 3, 9});
    EXPECT_EQ(till::keptChecksView({{u"a"_s, Standing::Current, {}, since},
                                    {u"b"_s, Standing::Parked, u"нет\nсвязи"_s, since},
                                    {u"c"_s, Standing::Unreadable, {}, since}}),
              u"Чек 1: b, отложен с 05.03.2026 14:03:09: нет связи\nЧек 2: c, не читается с 05.03.2026 14:03:09\n"_s);
}

} // namespace
