// The service as a client sees it: authentication, queries, envelopes, refusals of what is malformed.
#include "simulator_fixture.h"

#include <gmock/gmock.h>

namespace sim {

namespace {

using testing::HasSubstr;

using Http = SimulatorTest;

TEST_F(Http, ChecksTheCredentials)
{
    const std::string target = std::string(Api::loyaltyPath) + "searchCustomer?Brand=K&CardNumber=" + card;
    EXPECT_EQ(caller.get(target).status, 200);
    caller.http().set_basic_auth("u", "wrong");
    const Received refused = caller.get(target);
    EXPECT_EQ(refused.status, 401);
    EXPECT_EQ(refused.json()["success"], false);
    EXPECT_FALSE(refused.json().contains("data"));
    EXPECT_EQ(caller.post("createOrder", order("b", {})).status, 401);
    EXPECT_EQ(caller.ledger()["orders"].size(), 0u);
}

TEST_F(Http, TellsAboutTheCustomer)
{
    const std::string path = Api::loyaltyPath;
    const Json found = caller.get(path + "searchCustomer?Brand=K&Phone=%2B79001234567").json()["data"];
    EXPECT_EQ(found, Json({{"CustAccount", "C-0001"},
                           {"LastName", "Иванова"},
                           {"FirstName", "Мария"},
                           {"MiddleName", "Петровна"},
                           {"BirthDate", "1990-05-17 00:00:00"},
                           {"Gender", 2},
                           {"Email", "ivanova@example.org"},
                           {"Phone", "+79001234567"},
                           {"CardNumber", card}}));
    const std::string who = std::string("?Brand=K&CardNumber=") + secondCard + "&CustAccountNum=C-0001";
    EXPECT_EQ(caller.get(path + "cardInfo" + who).json()["data"]["Tiers"][1],
              Json({{"Name", "Серебро"}, {"Discount", 5}}));
    EXPECT_EQ(caller.get(path + "loyaltyBalanceInfo" + who).json()["data"]["AmountQty"], 1500.0);
}

struct QueryCase : Case
{
    const char *query;
    int status;
};

const QueryCase queryCases[] = {
    {"PlusNotEncoded", "searchCustomer?Brand=K&Phone=+79001234567", 404},
    {"UnknownPhone", "searchCustomer?Brand=K&Phone=%2B79990000000", 404},
    {"UnknownCard", "searchCustomer?Brand=K&CardNumber=1", 404},
    {"PartOfACard", "searchCustomer?Brand=K&CardNumber=777000000000", 404},
    {"InvalidUtf8", "searchCustomer?Brand=K&CardNumber=%ff%fe", 404},
    {"Neither", "searchCustomer?Brand=K", 400},
    {"Both", "searchCustomer?Brand=K&CardNumber=7770000000001&Phone=%2B79001234567", 400},
    {"OtherBrand", "searchCustomer?Brand=X&CardNumber=7770000000001", 400},
    {"NoBrand", "searchCustomer?CardNumber=7770000000001", 400},
    {"CardOfAnother", "cardInfo?Brand=K&CardNumber=7770000000032&CustAccountNum=C-0001", 404},
    {"MisspeltParameter", "cardInfo?Brand=K&CardNumber=7770000000001&CustAccount=C-0001", 400},
    {"TwiceTheCard", "loyaltyBalanceInfo?Brand=K&CardNumber=1&CardNumber=2&CustAccountNum=C-0001", 400},
    {"UnknownMethod", "loyaltyBonusInfo?Brand=K", 404},
    {"PostOnly", "createOrder", 405},
};

class Query : public SimulatorTest, public testing::WithParamInterface<QueryCase>
{
};

TEST_P(Query, IsRefused)
{
    const Received refused = caller.get(std::string(Api::loyaltyPath) + GetParam().query);
    EXPECT_EQ(refused.status, GetParam().status);
    EXPECT_EQ(refused.json()["success"], false);
    EXPECT_FALSE(refused.json()["message"].get<std::string>().empty());
}

INSTANTIATE_TEST_SUITE_P(Refusals, Query, testing::ValuesIn(queryCases), caseName);

struct BodyCase : Case
{
    const char *patch;   ///< RFC 7396 merge patch of a good body; an array is put in place of the only line's fields
    const char *message; ///< what the refusal must name
};

const BodyCase bodyCases[] = {
    {"OtherBrand", R"({"brand": "X"})", "Бренд"},
    {"NoBasket", R"({"basket": null})", "basket"},
    {"EmptyBasket", R"({"basket": ""})", "basket"},
    {"NumberForText", R"({"cardNumber": 1})", "cardNumber"},
    {"ExtraField", R"({"orderId": "1"})", "orderId"},
    {"WrongDate", R"({"basketDatetime": "2023-02-29"})", "basketDatetime"},
    {"DateWithTime", R"({"basketDatetime": "2024-02-29 10:00:00"})", "basketDatetime"},
    {"LinesNotAnArray", R"({"orderLines": {}})", "orderLines"},
    {"DiscountNotTheSum", R"({"paymentDiscAmount": "0.01"})", "paymentDiscAmount"},
    {"OneDecimal", R"({"line": {"lineAmount": "1.0"}})", "orderLines[0].lineAmount"},
    {"NumberForMoney", R"({"line": {"lineAmount": 1.00}})", "orderLines[0].lineAmount"},
    {"TextForFlag", R"({"line": {"isSale": "false"}})", "orderLines[0].isSale"},
    {"AnswersSpelling", R"({"line": {"lineId": "1", "lineID": null}})", "orderLines[0].lineId"},
    {"LineNumberNotText", R"({"line": {"lineID": 1}})", "orderLines[0].lineID"},
    {"DiscountAboveAmount", R"({"line": {"paymentDiscAmount": "100.01"}})", "orderLines[0].paymentDiscAmount"},
};

class Body : public SimulatorTest, public testing::WithParamInterface<BodyCase>
{
};

TEST_P(Body, IsRefusedNamingTheField)
{
    Json patch = Json::parse(GetParam().patch);
    Json body = order("b", {line(1, "100.00")});
    body["orderLines"][0].merge_patch(patch.value("line", Json::object()));
    patch.erase("line");
    body.merge_patch(patch);
    const Received refused = caller.post("createOrder", body);
    EXPECT_EQ(refused.status, 400);
    EXPECT_THAT(refused.json()["message"].get<std::string>(), HasSubstr(GetParam().message));
    EXPECT_EQ(caller.ledger()["orders"].size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Refusals, Body, testing::ValuesIn(bodyCases), caseName);

TEST_F(Http, RefusesWhatIsNoJsonObject)
{
    const std::string path = std::string(Api::loyaltyPath) + "createOrder";
    for (const char *body : {"", "{", "[]", "\xff"})
        EXPECT_EQ(caller.send(path, body).status, 400) << body;
    const auto form = caller.http().Post(path, order("b", {}).dump(), "text/plain");
    EXPECT_EQ(form->status, 415);
    EXPECT_EQ(caller.post("createOrder", order("b", {line(1, "1.00"), line(1, "1.00")})).status, 400);
}

TEST_F(Http, KeepsMessagesInTheOutbox)
{
    const std::string path = std::string(Api::messagePath) + "send";
    Json message{{"brand", "K"}, {"phone", "+79001234567"}, {"text", "Код 1234"}, {"channel", "sms"}};
    EXPECT_EQ(caller.send(path, message.dump()).outcome(), "ok");
    message.update({{"phone", "+79990000000"}});
    EXPECT_EQ(caller.send(path, message.dump()).outcome(), "ok");
    message.update({{"phone", ""}});
    EXPECT_EQ(caller.send(path, message.dump()).outcome(), "400");

    EXPECT_EQ(caller.get("/sim/outbox").json()["messages"].size(), 2u);
    const Json found = caller.get("/sim/outbox?phone=%2B79001234567").json()["messages"];
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]["text"], "Код 1234");
    EXPECT_EQ(caller.get("/sim/outbox?phone=+79001234567").status, 400);
}

TEST_F(Http, CountsAndKeepsRequestsAsTheyCame)
{
    const std::string target = std::string(Api::loyaltyPath) + "cardInfo?Brand=K&Phone=%2B7";
    caller.get(target);
    caller.send(std::string(Api::loyaltyPath) + "createOrder", " {\"basket\" : 1}");
    const Json log = caller.get("/sim/requests").json();
    EXPECT_EQ(log["counts"], Json({{"cardInfo", 1}, {"createOrder", 1}}));
    EXPECT_EQ(log["requests"][0]["target"], target);
    EXPECT_EQ(log["requests"][1]["body"], " {\"basket\" : 1}");
    EXPECT_EQ(log["requests"][1]["status"], 400);
}

} // namespace

} // namespace sim
