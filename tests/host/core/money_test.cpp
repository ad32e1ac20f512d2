// Kopecks: rounding as a person does it, and splitting without losing one.
#include "tests/support/commalocale.h"

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
