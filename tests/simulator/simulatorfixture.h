// A simulator on a free port inside the test process, and the words in which the tests speak to it.
#pragma once

#include "customerfile.h"
#include "httpserver.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <QtCore/QTemporaryDir>

#include <string>
#include <thread>
#include <vector>

namespace sim {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

/// The sample customer with two cards, 5 % and a balance of 1500.00.
inline constexpr const char *card = "7770000000001";
inline constexpr const char *otherCard = "7770000000032";

struct Received
{
    int status = 0; ///< 0: the connection ended without an answer
    std::string text;

    Json json() const { return Json::parse(text, nullptr, false); }
    Json result() const { return json()["result"]; }
    /// "ok", the errorCode, or the HTTP status of any other refusal.
    std::string outcome() const
    {
        const Json body = json();
        if (status != 200 || !body.is_object() || !body.value("success", false))
            return std::to_string(status);
        return body.contains("error") ? std::to_string(body["error"]["errorCode"].get<int>()) : "ok";
    }
};

inline Json line(int lineId, const std::string &amount, const Json &changes = Json::object())
{
    Json body = Json::parse(R"({"barcode": "", "qty": "1", "isSale": false, "noDiscountAllowed": false,
                                "noEarnAllowed": false, "paymentDiscAmount": "0.00"})");
    body.update({{"lineID", std::to_string(lineId)}, {"lineAmount", amount}});
    body.update(changes);
    return body;
}

inline Json basketBody(const std::string &basket, const char *cardNumber = card)
{
    return {{"brand", "K"}, {"cardNumber", cardNumber}, {"onlineStore", "S"}, {"basket", basket}, {"terminal", "T"}};
}

inline Json order(const std::string &basket, const std::vector<Json> &lines, const char *cardNumber = card)
{
    Json body = basketBody(basket, cardNumber);
    body.update({{"basketDatetime", "2024-02-29"}, {"orderLines", lines}, {"paymentDiscAmount", "0.00"}});
    return body;
}

inline Json usualBody(const std::string &method, const std::string &basket)
{
    Json body =
        method == "cancelOrder" || method == "bindOrderId" ? basketBody(basket) : order(basket, {line(1, "100.00")});
    if (method == "bindOrderId")
        body["orderID"] = "check-" + basket;
    return body;
}

/// Speaks to a simulator over real HTTP with the credentials u:p.
class Caller
{
public:
    explicit Caller(int port) : http("127.0.0.1", port)
    {
        http.set_basic_auth("u", "p");
        http.set_keep_alive(true);
        http.set_tcp_nodelay(true);
        http.set_url_encode(false);
    }

    Received get(const std::string &target) { return received(http.Get(target)); }
    Received query(const std::string &target) { return get(Api::loyaltyPath + target); }
    Received send(const std::string &path, const std::string &body)
    {
        return received(http.Post(path, body, "application/json"));
    }
    Received post(const std::string &method, const Json &body) { return send(Api::loyaltyPath + method, body.dump()); }

    /// Calls "calculateOrder", "createOrder" and so on with the usual body for the basket.
    Received call(const std::string &method, const std::string &basket)
    {
        return post(method, usualBody(method, basket));
    }

    void fault(const Json &fault) { EXPECT_EQ(send("/sim/faults", fault.dump()).outcome(), "ok"); }
    Json ledger() { return get("/sim/ledger").json(); }
    Json requests() { return get("/sim/requests").json(); }
    /// Of the sample customer with two cards, as text.
    std::string balance() { return ledger()["customers"][0]["Balance"]; }
    std::string stateOf(const std::string &basket)
    {
        const Json body = ledger();
        for (const Json &each : body["orders"])
            if (each["basket"] == basket)
                return each["state"];
        return "none";
    }

    httplib::Client http;

private:
    static Received received(const httplib::Result &answer)
    {
        return answer ? Received{answer->status, answer->body} : Received{};
    }
};

struct SimulatorTest : testing::Test
{
    SimulatorTest()
    {
        database.write([](const SQLite::Database &connection) { return addCustomers(connection, sampleCustomers()); });
    }
    ~SimulatorTest() override { server.stop(); }

    QTemporaryDir folder;
    const std::string ledgerFile = folder.filePath(QStringLiteral("ledger.db")).toStdString();
    Database database{ledgerFile, Database::Access::Serve};
    HttpServer server{database, {"u", "p", "K"}};
    int port = server.bind(0);
    std::jthread thread{[this] { server.run(); }};
    Caller caller{port};
};

} // namespace sim
