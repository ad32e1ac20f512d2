// Kopecks: rounding as a person does it, and splitting without losing one.
#include "tests/support/commalocale.h"
#include "tests/support/test.h"

#include <core/basicexception.h>
#include <core/money.h>

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
        {9e16, 0},
        {qQNaN(), 0},
    };
    for (const auto &[rubles, kopecks] : cases)
        EXPECT_EQ(Money::fromRubles(rubles).kopecks(), kopecks) << rubles;
    EXPECT_EQ(Money::fromKopecks(-123'405).toText(), u"-1234.05");
    EXPECT_TRUE(Money().isZero() && !Money::fromKopecks(-1).isZero());
    EXPECT_NO_THROW(Money::requireSum(0, {}); Money::requireSum(1e12, {}));
    for (const double noSum : {-0.01, 1.01e12, qQNaN()})
        EXPECT_THROW(Money::requireSum(noSum, {}), BasicException);
}

TEST(Money, DistributesToTheKopeck)
{
    constexpr qint64 huge = 4'000'000'000'000'000'000;
    // The sum, the weights and the parts.
    using Kopecks = std::vector<qint64>;
    const std::tuple<qint64, Kopecks, Kopecks> cases[] = {
        {100, {1, 1, 1}, {33, 33, 34}},
        {-100, {1, 1, 1}, {-33, -33, -34}},
        {1, {1, 2, 2}, {0, 0, 1}},
        {10, {0, 5, -3, 5}, {0, 5, 0, 5}},
        {7, {0, 0}, {7, 0}},
        {5, {}, {}},
        {huge, {huge, huge}, {huge / 2, huge / 2}},
    };
    for (const auto &[total, weights, expected] : cases) {
        QList<Money> sums;
        for (const qint64 weight : weights)
            sums.append(Money::fromKopecks(weight));
        Kopecks parts;
        for (const Money part : Money::distribute(Money::fromKopecks(total), sums))
            parts.push_back(part.kopecks());
        EXPECT_EQ(parts, expected);
    }
}
