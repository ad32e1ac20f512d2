// The numbers that the host's contract gives its enumerations; stored checks hold them too.
#include <core/eventcode.h>
#include <document/saledocument.h>
#include <loyalty/ecardnumbertype.h>
#include <loyalty/ecoupon.h>
#include <loyalty/loyaltysystemoption.h>

#include <gtest/gtest.h>

TEST(Contract, NumbersStayAsTheyAre)
{
    const auto numbers = [](auto... values) { return QList<int>{static_cast<int>(values)...}; };
    using enum EventCode;
    EXPECT_EQ(numbers(SubtotalEntered, PositionChanged, PositionRestored, PaymentStarted, LoyaltyResultDropped),
              QList({24, 57, 237, 238, 239}));
    using Mode = EDiscountMode;
    EXPECT_EQ(numbers(Mode::Automatic, Mode::LoyaltySystem, Mode::Manual, Mode::Card, Mode::Coupon, Mode::Payment),
              QList({1, 2, 3, 4, 5, 6}));
    using Type = EDiscountType;
    EXPECT_EQ(numbers(Type::None, Type::Percent, Type::Sum, Type::FixedPrice, Type::Coupon, Type::Bonus),
              QList({0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(numbers(EDocumentType::Sale, EDocumentType::Refund, EDocumentType::RefundBySale), QList({1, 2, 25}));
    EXPECT_EQ(numbers(EDiscountObject::Check, EDiscountObject::Position, Client::Sex::Male), QList({0, 1, 0}));
    using Option = LoyaltySystemOption;
    EXPECT_EQ(
        numbers(Option::SpendPoints, Option::EarnPoints, Option::RequestAfterClose, Option::RequestPointsForSpend),
        QList({1, 2, 4, 0x4000}));
    EXPECT_EQ(numbers(ECardNumberType::Manual, ECardNumberType::Phone, ECardNumberType::Scanned), QList({0, 1, 2}));
    EXPECT_EQ(numbers(ECoupon::Unknown, ECoupon::Discount, ECoupon::Gift), QList({0, 1, 2}));
}
