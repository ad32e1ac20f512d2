// Kopecks: rounding as a person does it, and splitting without losing one.
#include "commalocale.h"

#include <core/money.h>

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

TEST(Money, RoundsRublesAsAPersonReadsThem)
{
    const CommaLocale commas;
    const std::pair<double, qint64> cases[] = {
        {0, 0},
        {0.125, 13},
        {-0.125, -13},
        {1.005, 101},
        {-1.005, -101},
        {2.675, 268},
        {1.004999, 100},
        {0.1 + 0.2, 30},
        {1.115 * 3, 335},
        {0.004, 0},
        {0.005, 1},
        {1e-20, 0},
        {1e-300, 0},
        {999'999'999.995, 100'000'000'000},
        {1'234'567'890'123.45, 123'456'789'012'345},
        {8.9e16, 8'900'000'000'000'000'000},
        {1e17, 0},
        {std::numeric_limits<double>::infinity(), 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (const auto &[rubles, kopecks] : cases)
        EXPECT_EQ(Money::fromRubles(rubles).kopecks(), kopecks) << rubles;
}

TEST(Money, RubleFormOfEverySmallAmountComesBack)
{
    for (qint64 kopecks = -200'000; kopecks <= 200'000; ++kopecks)
        ASSERT_EQ(Money::fromRubles(Money::fromKopecks(kopecks).toRubles()).kopecks(), kopecks);
}

TEST(Money, WritesTwoDecimals)
{
    const CommaLocale commas;
    const std::pair<qint64, const char *> cases[] = {
        {0, "0.00"},
        {5, "0.05"},
        {-5, "-0.05"},
        {-1230, "-12.30"},
        {123'456'789, "1234567.89"},
        {std::numeric_limits<qint64>::min(), "-92233720368547758.08"},
    };
    for (const auto &[kopecks, text] : cases)
        EXPECT_EQ(Money::fromKopecks(kopecks).toText().toStdString(), text);
}

TEST(Money, DistributesToTheKopeck)
{
    constexpr qint64 huge = 4'000'000'000'000'000'000;
    struct Case
    {
        qint64 total;
        std::vector<qint64> weights, parts;
    };
    const Case cases[] = {
        {100, {1, 1, 1}, {34, 33, 33}},
        {200, {1, 1, 1}, {67, 67, 66}},
        {-100, {1, 1, 1}, {-34, -33, -33}},
        {1, {1, 2, 2}, {0, 1, 0}},
        {10, {0, 5, -3, 5}, {0, 5, 0, 5}},
        {7, {0, 0}, {7, 0}},
        {0, {3, 4}, {0, 0}},
        {5, {}, {}},
        {999, {33'333, 33'333, 33'334}, {333, 333, 333}},
        {huge, {huge, huge}, {huge / 2, huge / 2}},
    };
    for (const Case &example : cases) {
        QList<Money> weights;
        for (const qint64 weight : example.weights)
            weights.append(Money::fromKopecks(weight));
        std::vector<qint64> parts;
        for (const Money part : Money::distribute(Money::fromKopecks(example.total), weights))
            parts.push_back(part.kopecks());
        EXPECT_EQ(parts, example.parts) << example.total;
    }
}
