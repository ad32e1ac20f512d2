// Kopecks: rounding as a person does it, and splitting without losing one.
#include "tests/support/commalocale.h"
#include "tests/support/logfile.h"

#include <core/basicexception.h>
#include <core/money.h>

#include <gtest/gtest.h>

#include <limits>

inline void PrintTo(Money money, std::ostream *out)
{
    *out << money.kopecks();
}

static QList<Money> kopecks(const QList<qint64> &numbers)
{
    QList<Money> sums;
    for (const qint64 number : numbers)
        sums.append(Money::fromKopecks(number));
    return sums;
}

TEST(Money, RoundsRublesAsAPersonReadsThem)
{
    const CommaLocale commas;
    const std::pair<double, qint64> cases[] = {
        {0.125, 13},
        {1.005, 101},
        {-1.005, -101},
        {1.004999, 100},
        {1.115 * 3, 335},
        {1e-300, 0},
        {999'999'999.995, 100'000'000'000},
        {1'234'567'890'123.45, 123'456'789'012'345},
        {8.9e16, 8'900'000'000'000'000'000},
        {1e17, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (const auto &[rubles, kopecks] : cases)
        EXPECT_EQ(Money::fromRubles(rubles).kopecks(), kopecks) << rubles;
}

TEST(Money, IsASumUpToATrillionRubles)
{
    const double tooLarge = std::nextafter(1e12, 2e12);
    for (const auto &[rubles, isSum] : {std::pair(0.0, true), {1e12, true}, {tooLarge, false}, {-0.01, false}}) {
        EXPECT_EQ(Money::isSum(rubles), isSum) << rubles;
    }
    LogFile log;
    EXPECT_NO_THROW(Money::requireSum(1, QStringLiteral("good")));
    EXPECT_THROW(Money::requireSum(-1, QStringLiteral("bad")), BasicException);
    EXPECT_TRUE(log.take().contains(QStringLiteral("bad: недопустимая сумма -1\n")));
}

TEST(Money, WritesTwoDecimals)
{
    const CommaLocale commas;
    EXPECT_EQ(Money::fromKopecks(-5).toText(), QStringLiteral("-0.05"));
    EXPECT_EQ(Money::fromKopecks(std::numeric_limits<qint64>::min()).toText(), QStringLiteral("-92233720368547758.08"));
}

TEST(Money, DistributesToTheKopeck)
{
    constexpr qint64 huge = 4'000'000'000'000'000'000;
    const std::tuple<qint64, QList<Money>, QList<Money>> cases[] = {
        {100, kopecks({1, 1, 1}), kopecks({34, 33, 33})},
        {-100, kopecks({1, 1, 1}), kopecks({-34, -33, -33})},
        {1, kopecks({1, 2, 2}), kopecks({0, 1, 0})},
        {10, kopecks({0, 5, -3, 5}), kopecks({0, 5, 0, 5})},
        {7, kopecks({0, 0}), kopecks({7, 0})},
        {5, {}, {}},
        {huge, kopecks({huge, huge}), kopecks({huge / 2, huge / 2})},
    };
    for (const auto &[total, weights, parts] : cases)
        EXPECT_EQ(Money::distribute(Money::fromKopecks(total), weights), parts);
}
