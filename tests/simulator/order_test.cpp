// The life of an order over HTTP: what is allowed when, what repeats, what is booked; and the rules of its points.
#include "audit.h"
#include "pricing.h"
#include "simulatorfixture.h"

namespace sim {

struct Orders : SimulatorTest
{
    ~Orders() override { EXPECT_THAT(database.read(auditLedger), IsEmpty()); }
};

/// Every operation in every state, once and again: the repetition has the same answer and books nothing.
TEST_F(Orders, GoThroughTheirLifeAsPromised)
{
    const std::pair<const char *, std::vector<std::string>> ways[] = {
        {"none", {}},
        {"calculated", {"calculateOrder"}},
        {"created", {"calculateOrder", "createOrder"}},
        {"updated", {"createOrder", "updateOrder"}},
        {"posted", {"createOrder", "postOrder"}},
        {"bound", {"createOrder", "postOrder", "bindOrderId"}},
        {"cancelled", {"createOrder", "cancelOrder"}},
    };
    // For each of the states above: the state after the operation, or its refusal.
    const std::pair<const char *, std::vector<std::string>> operations[] = {
        {"calculateOrder", {"calculated", "calculated", "created", "updated", "102", "102", "101"}},
        {"createOrder", {"created", "created", "created", "created", "102", "102", "101"}},
        {"updateOrder", {"404", "103", "updated", "updated", "102", "102", "101"}},
        {"postOrder", {"404", "103", "posted", "posted", "posted", "bound", "101"}},
        {"bindOrderId", {"404", "105", "105", "105", "bound", "bound", "101"}},
        {"cancelOrder", {"cancelled", "cancelled", "cancelled", "cancelled", "102", "102", "cancelled"}},
    };
    for (const auto &[operation, outcomes] : operations) {
        for (std::size_t i = 0; i < std::size(ways); ++i) {
            const std::string basket = std::string(operation) + " on " + ways[i].first;
            SCOPED_TRACE(basket);
            for (const std::string &step : ways[i].second)
                ASSERT_EQ(caller.call(step, basket).outcome(), "ok");
            ASSERT_EQ(caller.stateOf(basket), ways[i].first);

            const Received first = caller.call(operation, basket);
            const Json after = caller.ledger();
            EXPECT_EQ(first.outcome() == "ok" ? caller.stateOf(basket) : first.outcome(), outcomes[i]);
            EXPECT_EQ(caller.call(operation, basket).text, first.text);
            EXPECT_EQ(caller.ledger(), after);
        }
    }
}

TEST_F(Orders, GiveAReservationBackWhenTheyChange)
{
    caller.call("createOrder", "b");
    EXPECT_EQ(caller.balance(), "1450.00");
    const Json unredeemable = order("b", {line(1, "100.00", {{"noDiscountAllowed", true}})});
    EXPECT_EQ(caller.post("createOrder", unredeemable).result()["redeemPoints"], Json::array());
    EXPECT_EQ(caller.balance(), "1500.00");

    caller.call("createOrder", "b");
    Json bigger = order("b", {line(1, "100.00"), line(2, "10.00")});
    bigger["orderLines"][0]["paymentDiscAmount"] = "-0.00";
    bigger["paymentDiscAmount"] = "0.01"; // 0.0049 twice, rounded
    EXPECT_EQ(caller.post("updateOrder", bigger).result(),
              (Json{{"basket", "b"}, {"earnPoints", 5.5}, {"redeemPoints", Json::array()}}));
    EXPECT_EQ(caller.balance(), "1500.00");
    EXPECT_EQ(caller.call("postOrder", "b").outcome(), "104") << "the body of the creation is not the last accepted";
    EXPECT_EQ(caller.post("cancelOrder", basketBody("b", otherCard)).outcome(), "107");
    EXPECT_EQ(caller.post("postOrder", bigger).outcome(), "ok");
    EXPECT_EQ(caller.balance(), "1505.50");
}

TEST_F(SimulatorTest, SaysWhatIsWrongWithItsLedger)
{
    caller.call("createOrder", "b");
    caller.call("postOrder", "b");
    SQLite::Database(ledgerFile, SQLite::OPEN_READWRITE)
        .exec("UPDATE customers SET balance = 145251 WHERE account = 'C-0001';"
              "UPDATE orders SET earned = 251, order_id = 'x'; UPDATE order_lines SET points = amount + 1");
    EXPECT_THAT(database.read(auditLedger),
                testing::ElementsAre(HasSubstr("balance 1452.51, movements 1452.50"),
                                     HasSubstr("(posted): movements -47.50, expected -97.50"),
                                     HasSubstr("order id 'x' does not fit"), HasSubstr("line 1 is paid with more")));
}

TEST(Pricing, FollowsTheRules)
{
    constexpr bool yes = true;
    constexpr bool no = false;
    constexpr Points rich = 1000000;
    constexpr OrderLine usual{1, 10000, 0, no, no, no};
    // The lines (line, amount, payment discount, sale, no discount, no earn), the points that are available, those that
    // are spent on each line, and those that are earned at 5 %.
    const std::tuple<const char *, std::vector<OrderLine>, Points, std::vector<Points>, Points> cases[] = {
        {"half of a line", {usual}, rich, {5000}, 250},
        {"both round down", {{1, 101, 0, no, no, no}}, rich, {50}, 2},
        {"payment discount is neither redeemed nor earned", {{1, 10000, 2000, no, no, no}}, rich, {4000}, 200},
        {"no-discount line is paid with money", {{1, 10000, 0, no, yes, no}, usual}, rich, {0, 5000}, 750},
        {"no-earn line may still be redeemed", {{1, 10000, 0, no, no, yes}}, rich, {5000}, 0},
        {"sale line earns half", {{1, 10000, 0, yes, yes, no}}, 0, {0}, 250},
        {"balance lasts for the first lines", {usual, usual, usual}, 6001, {5000, 1001, 0}, 1199},
        {"rounded once per order", {{1, 110, 0, no, yes, no}, {2, 110, 0, yes, yes, no}}, 0, {0, 0}, 8},
    };
    for (const auto &[name, lines, available, spent, earned] : cases) {
        EXPECT_EQ(redeem(lines, available), spent) << name;
        EXPECT_EQ(earn(lines, spent, 5), earned) << name;
    }
}

} // namespace sim
