// The life of an order over HTTP: what is allowed when, what repeats, what is booked.
#include "audit.h"
#include "simulator_fixture.h"

#include <gmock/gmock.h>

#include <random>

namespace sim {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// The states and the operations that lead to each.
const std::pair<const char *, std::vector<std::string>> waysTo[] = {
    {"none", {}},
    {"calculated", {"calculateOrder"}},
    {"created", {"calculateOrder", "createOrder"}},
    {"updated", {"createOrder", "updateOrder"}},
    {"posted", {"createOrder", "postOrder"}},
    {"bound", {"createOrder", "postOrder", "bindOrderId"}},
    {"cancelled", {"createOrder", "cancelOrder"}},
};

struct LifeCase : Case
{
    std::vector<std::string> outcomes; ///< in the order above: the state after it, or the refusal
};

/// Named by the operation.
const LifeCase lifeCases[] = {
    {"calculateOrder", {"calculated", "calculated", "created", "updated", "102", "102", "101"}},
    {"createOrder", {"created", "created", "created", "created", "102", "102", "101"}},
    {"updateOrder", {"404", "103", "updated", "updated", "102", "102", "101"}},
    {"postOrder", {"404", "103", "posted", "posted", "posted", "bound", "101"}},
    {"bindOrderId", {"404", "105", "105", "105", "bound", "bound", "101"}},
    {"cancelOrder", {"cancelled", "cancelled", "cancelled", "cancelled", "102", "102", "cancelled"}},
};

std::string stateOf(const Json &ledger, const std::string &basket)
{
    for (const Json &each : ledger["orders"])
        if (each["basket"] == basket)
            return each["state"];
    return "none";
}

class Life : public SimulatorTest, public testing::WithParamInterface<LifeCase>
{
};

/// Every operation in every state, once and again: the repetition has the same answer and books nothing.
TEST_P(Life, GoesAsPromised)
{
    const std::string operation = GetParam().name;
    for (std::size_t i = 0; i < std::size(waysTo); ++i) {
        const auto &[state, way] = waysTo[i];
        SCOPED_TRACE(operation + " on " + state);
        for (const std::string &step : way)
            ASSERT_EQ(caller.call(step, state).outcome(), "ok");
        ASSERT_EQ(stateOf(caller.ledger(), state), state);

        const Received first = caller.call(operation, state);
        const Json after = caller.ledger();
        EXPECT_EQ(first.outcome() == "ok" ? stateOf(after, state) : first.outcome(), GetParam().outcomes[i]);
        EXPECT_EQ(caller.call(operation, state).text, first.text);
        EXPECT_EQ(caller.ledger(), after);
    }
    EXPECT_THAT(database.read(auditLedger), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Orders, Life, testing::ValuesIn(lifeCases), caseName);

using Orders = SimulatorTest;

TEST_F(Orders, BookAWholeSale)
{
    const Json body = order("b", {line(1, "91.00"), line(2, "50.00", {{"noDiscountAllowed", true}})});
    const Json offered = caller.post("calculateOrder", body).result();
    EXPECT_EQ(offered["redeemPoints"], Json::parse(R"([{"lineId": 1, "points": 45.5}])"));
    EXPECT_EQ(offered["earnPoints"], 7.05) << "nothing is redeemed yet";
    EXPECT_EQ(caller.balance(), "1500.00");

    EXPECT_EQ(caller.post("createOrder", body).result()["earnPoints"], 4.77);
    EXPECT_EQ(caller.balance(), "1454.50") << "reserved at once";
    EXPECT_EQ(caller.post("postOrder", body).outcome(), "ok");
    EXPECT_EQ(caller.balance(), "1459.27");
    EXPECT_EQ(caller.post("bindOrderId", binding("b", "check-1")).outcome(), "ok");
    EXPECT_EQ(caller.post("bindOrderId", binding("b", "check-2")).outcome(), "106");
    EXPECT_EQ(caller.ledger()["orders"][0]["orderId"], "check-1");
}

TEST_F(Orders, UpdateGivesTheReservationBack)
{
    const Json bigger = order("b", {line(1, "100.00"), line(2, "10.00")});
    caller.call("createOrder", "b");
    EXPECT_EQ(caller.balance(), "1450.00");
    const Json updated = caller.post("updateOrder", bigger).result();
    EXPECT_EQ(updated["redeemPoints"], Json::array());
    EXPECT_EQ(updated["earnPoints"], 5.5);
    EXPECT_EQ(caller.balance(), "1500.00");
    EXPECT_EQ(caller.call("postOrder", "b").outcome(), "104") << "the body of the creation is not the last accepted";
    EXPECT_EQ(caller.post("postOrder", bigger).outcome(), "ok");
    EXPECT_EQ(caller.balance(), "1505.50");
}

TEST_F(Orders, FinalCreationReplacesTheReservation)
{
    caller.call("createOrder", "b");
    const Json final = order("b", {line(1, "100.00", {{"noDiscountAllowed", true}})});
    EXPECT_EQ(caller.post("createOrder", final).result()["redeemPoints"], Json::array());
    EXPECT_EQ(caller.balance(), "1500.00");
    caller.call("createOrder", "b");
    EXPECT_EQ(caller.balance(), "1450.00");
    caller.call("cancelOrder", "b");
    EXPECT_EQ(caller.balance(), "1500.00");
}

TEST_F(Orders, ReservationsOfOtherChecksAreNotOffered)
{
    const Json whole = order("first", {line(1, "3000.00")}, secondCard);
    caller.post("createOrder", whole);
    EXPECT_EQ(caller.balance(), "0.00") << "both cards share the balance";
    EXPECT_EQ(caller.call("calculateOrder", "second").result()["redeemPoints"], Json::array());
    EXPECT_EQ(caller.post("calculateOrder", whole).result()["redeemPoints"][0]["points"], 1500.0)
        << "what the order holds itself is offered again";
}

TEST_F(Orders, BelongToOneCard)
{
    caller.call("createOrder", "b");
    EXPECT_EQ(caller.post("createOrder", order("b", {}, otherCard)).outcome(), "107");
    EXPECT_EQ(caller.post("cancelOrder", basketBody("b", otherCard)).outcome(), "107");
    EXPECT_EQ(caller.post("createOrder", order("c", {}, "1")).outcome(), "404");
    EXPECT_EQ(caller.ledger()["orders"].size(), 1u);
}

/// Several tills at once on one balance: whatever the order of things, the ledger stays consistent.
TEST_F(Orders, StayConsistentUnderRandomCallsAtOnce)
{
    const std::vector<std::string> operations{"calculateOrder", "createOrder", "createOrder", "updateOrder",
                                              "postOrder",      "bindOrderId", "cancelOrder"};
    const auto till = [&](unsigned seed) {
        Caller own(port);
        std::mt19937 random(seed);
        for (int i = 0; i < 60; ++i) {
            const std::string basket = std::to_string(random() % 12);
            const std::string operation = operations[random() % operations.size()];
            const std::string amount = std::to_string(random() % 900) + ".0" + std::to_string(random() % 10);
            const bool priced = operation != "bindOrderId" && operation != "cancelOrder" && operation != "postOrder";
            const Received answer =
                priced ? own.post(operation, order(basket, {line(1, amount.c_str())})) : own.call(operation, basket);
            EXPECT_THAT(answer.status, testing::AnyOf(200, 404)) << answer.text;
        }
    };
    {
        std::vector<std::jthread> tills;
        for (unsigned seed = 1; seed <= 4; ++seed)
            tills.emplace_back(till, seed);
    }
    EXPECT_THAT(database.read(auditLedger), IsEmpty());
}

struct DamageCase : Case
{
    const char *damage;
    const char *finding;
};

const DamageCase damageCases[] = {
    {"Balance", "UPDATE customers SET balance = balance + 1", "balance 1505.01, movements 1505.00"},
    {"LostMovement", "DELETE FROM movements WHERE kind = 'earn'", "expected 5.00"},
    {"BookedTwice", "INSERT INTO movements SELECT NULL, account, basket, kind, points, at FROM movements", "movements"},
    {"BoundUnposted", "UPDATE orders SET state = 'updated'", "order id 'check-b' does not fit"},
    {"PostedUnbound", "UPDATE orders SET order_id = NULL", "order id '' does not fit"},
    {"Overpaid", "UPDATE order_lines SET points = 10001", "more points than it costs"},
};

class Audit : public SimulatorTest, public testing::WithParamInterface<DamageCase>
{
};

TEST_P(Audit, FindsDamage)
{
    const Json body = order("b", {line(1, "100.00", {{"noDiscountAllowed", true}})});
    caller.post("createOrder", body);
    caller.post("postOrder", body);
    caller.call("bindOrderId", "b");
    EXPECT_THAT(database.read(auditLedger), IsEmpty());
    database.write([](SQLite::Database &connection) { return connection.exec(GetParam().damage); });
    EXPECT_THAT(testing::PrintToString(database.read(auditLedger)), HasSubstr(GetParam().finding));
}

INSTANTIATE_TEST_SUITE_P(Ledger, Audit, testing::ValuesIn(damageCases), caseName);

} // namespace

} // namespace sim
