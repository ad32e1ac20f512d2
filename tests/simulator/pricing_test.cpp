// The rules of earning and redeeming, and the text form of sums.
#include "pricing.h"
#include "simulator_fixture.h"

#include <gtest/gtest.h>

namespace sim {

namespace {

TEST(Money, IsReadOnlyWithTwoDecimals)
{
    EXPECT_EQ(parseHundredths("91.00"), 9100);
    EXPECT_EQ(parseHundredths("0.05"), 5);
    for (const char *wrong :
         {"", "91", "91.0", "91.000", "91,00", ".50", "-1.00", "+1.00", " 1.00", "1e2.00", "1234567890123.00"})
        EXPECT_EQ(parseHundredths(wrong), std::nullopt) << wrong;
}

struct PriceCase : Case
{
    std::vector<OrderLine> lines;
    Points available;
    std::vector<Points> spent;
    Points earned; ///< at 5 %
};

constexpr bool yes = true;
constexpr bool no = false;

// lineId, amount, payment discount, sale, no discount, no earn
const PriceCase priceCases[] = {
    {"HalfOfALine", {{1, 10000, 0, no, no, no}}, 1000000, {5000}, 250},
    {"BothRoundDown", {{1, 101, 0, no, no, no}}, 1000000, {50}, 2},
    {"PaymentDiscountIsNeitherRedeemedNorEarned", {{1, 10000, 2000, no, no, no}}, 1000000, {4000}, 200},
    {"NoDiscountLineIsPaidWithMoney", {{1, 10000, 0, no, yes, no}, {2, 10000, 0, no, no, no}}, 1000000, {0, 5000}, 750},
    {"NoEarnLineMayStillBeRedeemed", {{1, 10000, 0, no, no, yes}}, 1000000, {5000}, 0},
    {"SaleLineEarnsHalf", {{1, 10000, 0, yes, yes, no}}, 0, {0}, 250},
    {"BalanceLastsForTheFirstLines",
     {{1, 10000, 0, no, no, no}, {2, 10000, 0, no, no, no}, {3, 10000, 0, no, no, no}},
     6001,
     {5000, 1001, 0},
     1199},
    {"EarningIsRoundedOncePerOrder", {{1, 110, 0, no, yes, no}, {2, 110, 0, yes, yes, no}}, 0, {0, 0}, 8},
    {"NoLines", {}, 1000, {}, 0},
};

class Pricing : public testing::TestWithParam<PriceCase>
{
};

TEST_P(Pricing, FollowsTheRules)
{
    const PriceCase &expected = GetParam();
    EXPECT_EQ(redeem(expected.lines, expected.available), expected.spent);
    EXPECT_EQ(earn(expected.lines, expected.spent, 5), expected.earned);
}

INSTANTIATE_TEST_SUITE_P(Rules, Pricing, testing::ValuesIn(priceCases), caseName);

TEST(Phone, NeedsItsPlus)
{
    EXPECT_EQ(phoneKey("+7 (900) 123-45-67"), "+79001234567");
    for (const char *wrong : {"", "79001234567", " 79001234567", "+7900", "+7900123456x", "+7900123456712345"})
        EXPECT_EQ(phoneKey(wrong), "") << wrong;
}

} // namespace

} // namespace sim
