// The life of an order over HTTP: what is allowed when, what repeats, what is booked; and the rules of its points.
#include "audit.h"
#include "pricing.h"
#include "simulatorfixture.h"
#include "tests/support/golden.h"

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

/// Each row is a request, the usual one of a method or one that is written out, and its answer.
TEST_F(Orders, AreKeptAsInThisSession)
{
    expectCases(u"simulator/session.txt"_s, [this](const QByteArray &row) {
        const QByteArrayList words = row.split(' ');
        httplib::Request request;
        request.method = words[0].toStdString();
        request.path = words[1].toStdString();
        request.body = words.mid(2).join(' ').toStdString();
        if (!words[1].startsWith("/")) {
            Json body = usualBody(request.method, "b");
            body.merge_patch(Json::parse(words.mid(1).join(' ').toStdString()));
            request.path = Api::loyaltyPath + request.method;
            request.method = "POST";
            request.body = body.dump();
        }
        request.set_header("Content-Type", "application/json");
        const httplib::Result answer = caller.http.send(request);
        return QString::number(answer->status) + u' ' +
               QString::fromStdString(answer->get_header_value("Allow") + answer->body);
    });
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
    Customer customer;
    customer.tiers = {{"first", 4}, {"without points", 0}, {"not reached", Tier::notApplied}};
    EXPECT_EQ(earnPercent(customer), 0) << "the last one that applies";
}

} // namespace sim
