// The service as a client sees it: authentication, queries, refusals of what is malformed, and faults on demand.
#include "simulator_fixture.h"

namespace sim {

using Http = SimulatorTest;

const std::string createOrder = std::string(Api::loyaltyPath) + "createOrder";

TEST_F(Http, ChecksTheCredentials)
{
    caller.http.set_basic_auth("u", "wrong");
    const Received refused = caller.query(std::string("searchCustomer?Brand=K&CardNumber=") + card);
    EXPECT_EQ(refused.status, 401);
    EXPECT_FALSE(refused.json().contains("data"));
    EXPECT_EQ(caller.call("createOrder", "b").status, 401);
    EXPECT_EQ(caller.stateOf("b"), "none");
}

TEST_F(Http, TellsAboutTheCustomer)
{
    EXPECT_EQ(caller.query("searchCustomer?Brand=K&Phone=%2B79001234567").json()["data"],
              Json::parse(R"({"CustAccount": "C-0001", "LastName": "Иванова", "FirstName": "Мария",
                              "MiddleName": "Петровна", "BirthDate": "1990-05-17 00:00:00", "Gender": 2,
                              "Email": "ivanova@example.org", "Phone": "+79001234567",
                              "CardNumber": "7770000000001"})"));
    const std::string who = std::string("?Brand=K&CardNumber=") + secondCard + "&CustAccountNum=C-0001";
    EXPECT_EQ(caller.query("cardInfo" + who).json()["data"]["Tiers"][1], Json({{"Name", "Серебро"}, {"Discount", 5}}));
    EXPECT_EQ(caller.query("loyaltyBalanceInfo" + who).json()["data"]["AmountQty"], 1500.0);
}

TEST_F(Http, RefusesWrongQueries)
{
    const std::pair<const char *, int> cases[] = {
        {"searchCustomer?Brand=K&Phone=+79001234567", 404}, // the plus is not encoded
        {"searchCustomer?Brand=K&CardNumber=777000000000", 404},
        {"searchCustomer?Brand=K&CardNumber=%ff%fe", 404},
        {"searchCustomer?Brand=K", 400},
        {"searchCustomer?Brand=X&CardNumber=7770000000001", 400},
        {"cardInfo?Brand=K&CardNumber=7770000000032&CustAccountNum=C-0001", 404},
        {"cardInfo?Brand=K&CardNumber=7770000000001&CustAccount=C-0001", 400},
        {"createOrder", 405},
    };
    for (const auto &[query, status] : cases) {
        const Received refused = caller.query(query);
        EXPECT_EQ(refused.status, status) << query;
        EXPECT_EQ(refused.json()["success"], false);
        EXPECT_NE(refused.json()["message"], "");
    }
}

TEST_F(Http, RefusesWrongBodiesNamingTheField)
{
    // Where a good body is changed, to what, and what the refusal names.
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"/brand", R"("X")", "Бренд"},
        {"/basket", R"("")", "basket"},
        {"/cardNumber", "1", "cardNumber"},
        {"/orderId", R"("1")", "orderId"},
        {"/basketDatetime", R"("2023-02-29")", "basketDatetime"},
        {"/paymentDiscAmount", R"("0.01")", "paymentDiscAmount"},
        {"/orderLines/1", R"({"lineID": "2"})", "orderLines[1].barcode"},
        {"/orderLines/0/lineId", R"("1")", "orderLines[0].lineId"},
        {"/orderLines/0/lineAmount", R"("1.0")", "orderLines[0].lineAmount"},
        {"/orderLines/0/lineAmount", "1.00", "orderLines[0].lineAmount"},
        {"/orderLines/0/isSale", R"("false")", "orderLines[0].isSale"},
        {"/orderLines/0/paymentDiscAmount", R"("100.01")", "orderLines[0].paymentDiscAmount"},
    };
    for (const auto &[where, value, named] : cases) {
        Json body = order("b", {line(1, "100.00")});
        body[Json::json_pointer(where)] = Json::parse(value);
        const Received refused = caller.post("createOrder", body);
        EXPECT_EQ(refused.status, 400) << where << value;
        EXPECT_THAT(refused.text, HasSubstr(named));
    }
    for (const char *body : {"", "{", "[]", "\xff"})
        EXPECT_EQ(caller.send(createOrder, body).status, 400) << body;
    EXPECT_EQ(caller.post("createOrder", order("b", {line(1, "1.00"), line(1, "1.00")})).status, 400);
    EXPECT_EQ(caller.http.Post(createOrder, order("b", {}).dump(), "text/plain")->status, 415);
    EXPECT_THAT(caller.ledger()["orders"], IsEmpty());
}

TEST_F(Http, KeepsMessagesAndRequestsAsTheyCame)
{
    const std::string path = std::string(Api::messagePath) + "send";
    Json message{{"brand", "K"}, {"phone", "+79001234567"}, {"text", "Код 1234"}, {"channel", "sms"}};
    caller.send(path, message.dump());
    message["phone"] = "+79990000000";
    caller.send(path, message.dump());
    message["phone"] = "";
    caller.send(path, " " + message.dump());

    EXPECT_EQ(caller.get("/sim/outbox").json()["messages"].size(), 2u);
    const Json found = caller.get("/sim/outbox?phone=%2B79001234567").json()["messages"];
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]["text"], "Код 1234");
    EXPECT_EQ(caller.requests()["counts"], Json({{"send", 3}}));
    EXPECT_EQ(caller.requests()["requests"][2]["body"], " " + message.dump());
    EXPECT_EQ(caller.requests()["requests"][2]["status"], 400);
}

TEST_F(Http, FailsOneRequestWithEachKindOfFault)
{
    // The kind, the status that comes, and the order's state after it.
    const std::tuple<const char *, int, const char *> cases[] = {
        {"status", 500, "none"}, {"close", 0, "created"}, {"close-before", 0, "none"}, {"malformed", 200, "created"}};
    for (const auto &[kind, status, state] : cases) {
        SCOPED_TRACE(kind);
        caller.fault({{"method", "createOrder"}, {"kind", kind}});
        EXPECT_EQ(caller.call("cancelOrder", "other").outcome(), "ok");
        const Received answer = Caller(port).call("createOrder", kind);
        EXPECT_EQ(answer.status, status);
        EXPECT_NE(answer.outcome(), "ok");
        EXPECT_EQ(caller.stateOf(kind), state);
        EXPECT_EQ(caller.call("createOrder", kind).outcome(), "ok");
    }
    EXPECT_EQ(caller.requests()["counts"]["createOrder"], 8);
    EXPECT_EQ(caller.balance(), "1300.00");
}

TEST_F(Http, FailsEveryMethodUntilTheFaultIsForgotten)
{
    caller.fault({{"method", "*"}, {"kind", "status"}, {"times", 100}, {"status", 503}, {"body", {{"x", 1}}}});
    EXPECT_EQ(caller.call("cancelOrder", "b").text, R"({"x":1})");
    EXPECT_EQ(caller.query("cardInfo").status, 503);
    caller.http.Delete("/sim/faults");
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "ok");
}

/// A creation that arrives late, after the check was given up, must not reserve anything.
TEST_F(Http, RefusesACreationDelayedBeyondItsCancellation)
{
    caller.fault({{"method", "createOrder"}, {"kind", "delay"}, {"milliseconds", 300}});
    std::string late;
    std::thread slow([&] { late = Caller(port).call("createOrder", "b").outcome(); });
    while (caller.requests()["counts"].empty())
        std::this_thread::yield();
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "ok");
    slow.join();
    EXPECT_EQ(late, "101");
    EXPECT_EQ(caller.balance(), "1500.00");
}

TEST_F(Http, RefusesUnknownFaults)
{
    for (const char *wrong : {R"({"kind": "close"})", R"({"method": "send", "kind": "explode"})",
                              R"({"method": "send", "kind": "close", "times": 1e99})"})
        EXPECT_EQ(caller.send("/sim/faults", wrong).status, 400) << wrong;
}

} // namespace sim
