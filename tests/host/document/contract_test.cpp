// The numbers that the host's contract gives its enumerations; stored checks hold them too.
#include "tests/support/test.h"

#include <core/eventcode.h>
#include <document/documentbonusrecord.h>
#include <document/saledocument.h>
#include <loyalty/basicloyaltysystem.h>

TEST(HostContract, NumbersOfEnumerationsNeverChange)
{
    const auto numbers = [](auto... values) { return QList<int>{static_cast<int>(values)...}; };
    using enum EventCode;
    EXPECT_EQ(numbers(SubtotalEntered, PositionChanged, PositionRestored, PaymentStarted, LoyaltyResultDropped),
              numbers(24, 57, 237, 238, 239));
    using Mode = EDiscountMode;
    EXPECT_EQ(numbers(Mode::Undefined, Mode::Automatic, Mode::LoyaltySystem, Mode::Manual, Mode::Card, Mode::Coupon,
                      Mode::Payment),
              numbers(0, 1, 2, 3, 4, 5, 6));
    using Type = EDiscountType;
    EXPECT_EQ(numbers(Type::None, Type::Percent, Type::Sum, Type::FixedPrice, Type::Coupon, Type::Bonus),
              numbers(0, 1, 2, 3, 4, 5));
    using Price = EPriceSourceType;
    EXPECT_EQ(numbers(Price::Undefined, Price::Catalogue, Price::Barcode, Price::Manual, Price::MinimumPrice,
                      Price::Promotion),
              numbers(0, 1, 2, 3, 4, 5));
    using Number = ECardNumberType;
    EXPECT_EQ(numbers(EDiscountObject::Position, EImpactSource::DiscountSystem, EImpactSource::LoyaltySystem,
                      EImpactSource::Cashier, EDocumentType::Sale, EDocumentType::Refund, EDocumentType::RefundBySale,
                      Client::Sex::Male, Client::Sex::Female, Number::Manual, Number::Phone, Number::Scanned),
              numbers(1, 1, 2, 3, 1, 2, 25, 0, 1, 0, 1, 2));
    using Option = LoyaltySystemOption;
    EXPECT_EQ(numbers(Option::SpendPoints, Option::EarnPoints, Option::RequestAfterClose, Option::RequestPointsForSpend,
                      ECoupon::Unknown, ECoupon::Discount, ECoupon::Gift),
              numbers(1, 2, 4, 0x4000, 0, 1, 2));
    EXPECT_EQ(DocumentImpactDetail().getGivenSum(), 0);
    EXPECT_EQ(DocumentBonusRecord(), (DocumentBonusRecord{{}, 0, {}, {}, 0}));
}
