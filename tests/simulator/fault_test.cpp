// Faults on demand: what the client sees and what the ledger has then.
#include "simulator_fixture.h"

#include <thread>

namespace sim {

namespace {

class Faulty : public SimulatorTest
{
protected:
    void fault(const Json &body) { ASSERT_EQ(caller.send("/sim/faults", body.dump()).outcome(), "ok"); }
    std::size_t orders() { return caller.ledger()["orders"].size(); }
};

TEST_F(Faulty, StatusIsAnsweredWithoutProcessing)
{
    fault({{"method", "createOrder"}, {"kind", "status"}, {"times", 2}, {"status", 503}, {"body", {{"x", 1}}}});
    EXPECT_EQ(caller.call("calculateOrder", "other").outcome(), "ok");
    for (int i = 0; i < 2; ++i) {
        const Received answer = caller.call("createOrder", "b");
        EXPECT_EQ(answer.status, 503);
        EXPECT_EQ(answer.text, R"({"x":1})");
    }
    EXPECT_EQ(orders(), 1u);
    EXPECT_EQ(caller.call("createOrder", "b").outcome(), "ok");
}

TEST_F(Faulty, CloseProcessesAndSaysNothing)
{
    fault({{"method", "createOrder"}, {"kind", "close"}});
    EXPECT_EQ(Caller(port).call("createOrder", "b").status, 0);
    EXPECT_EQ(orders(), 1u);
    EXPECT_EQ(caller.balance(), "1450.00");
    EXPECT_EQ(caller.call("createOrder", "b").outcome(), "ok");
    EXPECT_EQ(caller.balance(), "1450.00");
}

TEST_F(Faulty, CloseBeforeProcessesNothing)
{
    fault({{"method", "createOrder"}, {"kind", "close-before"}});
    EXPECT_EQ(Caller(port).call("createOrder", "b").status, 0);
    EXPECT_EQ(orders(), 0u);
    EXPECT_EQ(caller.get("/sim/requests").json()["counts"]["createOrder"], 1);
}

TEST_F(Faulty, MalformedProcessesAndAnswersBrokenJson)
{
    fault({{"method", "createOrder"}, {"kind", "malformed"}});
    const Received answer = caller.call("createOrder", "b");
    EXPECT_EQ(answer.status, 200);
    EXPECT_TRUE(answer.json().is_discarded());
    EXPECT_EQ(orders(), 1u);
}

/// A creation that arrives late, after the check was given up, must not reserve anything.
TEST_F(Faulty, DelayedCreationAfterACancellationIsRefused)
{
    fault({{"method", "createOrder"}, {"kind", "delay"}, {"milliseconds", 300}});
    std::string late;
    std::thread slow([&] { late = Caller(port).call("createOrder", "b").outcome(); });
    while (caller.get("/sim/requests").json()["counts"].empty())
        std::this_thread::yield();
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "ok");
    slow.join();
    EXPECT_EQ(late, "101");
    EXPECT_EQ(caller.balance(), "1500.00");
}

TEST_F(Faulty, CanBeForEveryMethodAndForgotten)
{
    fault({{"method", "*"}, {"kind", "status"}, {"times", 100}});
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "500");
    EXPECT_EQ(caller.get(std::string(Api::loyaltyPath) + "cardInfo").outcome(), "500");
    caller.http().Delete("/sim/faults");
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "ok");
}

TEST_F(Faulty, RefusesWhatItDoesNotKnow)
{
    for (const char *wrong :
         {"", R"({"kind": "close"})", R"({"method": "send", "kind": "explode"})",
          R"({"method": "send", "kind": "close", "times": 0})", R"({"method": "send", "kind": "status", "status": 99})",
          R"({"method": "send", "kind": "delay", "delay": 5})",
          R"({"method": "send", "kind": "close", "times": 1e99})"})
        EXPECT_EQ(caller.send("/sim/faults", wrong).status, 400) << wrong;
    EXPECT_EQ(caller.call("createOrder", "b").outcome(), "ok");
}

} // namespace

} // namespace sim
