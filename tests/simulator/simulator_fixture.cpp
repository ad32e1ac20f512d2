// Setting up the in-process simulator and building bodies.
#include "simulator_fixture.h"

#include "customer_file.h"

#include <cstdlib>

namespace sim {

std::string Received::outcome() const
{
    const Json body = json();
    if (status != 200 || !body.is_object() || !body.value("success", false))
        return std::to_string(status);
    return body.contains("error") ? std::to_string(body["error"]["errorCode"].get<int>()) : "ok";
}

Json line(int lineId, const char *amount, const Json &changes)
{
    Json body{{"barcode", ""},
              {"lineID", std::to_string(lineId)},
              {"qty", "1"},
              {"lineAmount", amount},
              {"isSale", false},
              {"noDiscountAllowed", false},
              {"noEarnAllowed", false},
              {"paymentDiscAmount", "0.00"}};
    body.update(changes);
    return body;
}

Json order(const std::string &basket, const std::vector<Json> &lines, const char *cardNumber)
{
    Kopecks discount = 0;
    for (const Json &each : lines)
        discount += parseHundredths(each["paymentDiscAmount"].get<std::string>()).value_or(0);
    Json body = basketBody(basket, cardNumber);
    body.update(
        {{"basketDatetime", "2024-02-29"}, {"orderLines", lines}, {"paymentDiscAmount", formatHundredths(discount)}});
    return body;
}

Json basketBody(const std::string &basket, const char *cardNumber)
{
    return {{"brand", "K"}, {"cardNumber", cardNumber}, {"onlineStore", "S"}, {"basket", basket}, {"terminal", "T"}};
}

Json binding(const std::string &basket, const std::string &orderId)
{
    Json body = basketBody(basket);
    body["orderID"] = orderId;
    return body;
}

Caller::Caller(int port) : m_client("127.0.0.1", port)
{
    m_client.set_basic_auth("u", "p");
    m_client.set_keep_alive(true);
    m_client.set_url_encode(false);
    m_client.set_read_timeout(60);
}

Received Caller::get(const std::string &target)
{
    const auto answer = m_client.Get(target);
    return answer ? Received{answer->status, answer->body} : Received{};
}

Received Caller::post(const std::string &method, const Json &body)
{
    return send(Api::loyaltyPath + method, body.dump());
}

Received Caller::send(const std::string &path, const std::string &body)
{
    const auto answer = m_client.Post(path, body, "application/json");
    return answer ? Received{answer->status, answer->body} : Received{};
}

std::string Caller::balance()
{
    const Json body = ledger();
    return body["customers"][0]["Balance"].get<std::string>();
}

Received Caller::call(const std::string &method, const std::string &basket)
{
    if (method == "bindOrderId")
        return post(method, binding(basket, "check-" + basket));
    if (method == "cancelOrder")
        return post(method, basketBody(basket));
    return post(method, order(basket, {line(1, "100.00")}));
}

TemporaryDirectory::TemporaryDirectory()
{
    std::string pattern = std::filesystem::temp_directory_path() / "loyalty-sim-XXXXXX";
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary directory");
    m_path = pattern;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

SimulatorTest::SimulatorTest()
    : database(directory / "ledger.db", Database::Access::Serve),
      server(database, {"u", "p", "K"}),
      port(server.bind(0)),
      thread([this] { server.run(); }),
      caller(port)
{
    database.write([](const SQLite::Database &connection) { return addCustomers(connection, sampleCustomers()); });
}

SimulatorTest::~SimulatorTest()
{
    server.stop();
    thread.join();
}

} // namespace sim
