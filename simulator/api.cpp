// From a request to an envelope. Which refusal is answered how is decided here, in answerFor().
#include "api.h"

#include "customers.h"
#include "orders.h"
#include "outbox.h"
#include "refusal.h"
#include "wire.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iostream>

namespace sim {

namespace {

Answer answerFor(const Refusal &reason)
{
    switch (reason.kind()) {
    case Refusal::Kind::BadRequest:
        return refusal(400, reason.forCashier(), reason.what());
    case Refusal::Kind::NotFound:
        return refusal(404, reason.forCashier(), reason.what());
    case Refusal::Kind::Rule:
        break;
    }
    return {200,
            {{"success", true}, {"error", {{"errorCode", reason.code()}, {"description", reason.forCashier()}}}},
            "error " + std::to_string(reason.code()) + ": " + reason.what()};
}

Answer guarded(const char *member, const std::function<Json()> &step)
try {
    return {200, {{"success", true}, {member, step()}}, {}};
} catch (const Refusal &reason) {
    return answerFor(reason);
} catch (const std::exception &error) {
    std::cerr << "loyalty-sim: " << error.what() << std::endl;
    return refusal(500, "Внутренняя ошибка сервиса", std::string("internal error: ") + error.what());
}

const std::string &parameter(const Api::Parameters &parameters, const std::string &name)
{
    if (parameters.count(name) != 1)
        throw Refusal(Refusal::Kind::BadRequest, "Параметр " + name + ": ожидается один раз",
                      "parameter " + name + ": expected once");
    return parameters.find(name)->second;
}

void allowOnly(const Api::Parameters &parameters, std::initializer_list<const char *> names)
{
    for (const auto &[name, value] : parameters)
        if (std::find(names.begin(), names.end(), name) == names.end())
            throw Refusal(Refusal::Kind::BadRequest, "Параметр " + name + ": неизвестный параметр",
                          "parameter " + name + ": unknown");
}

Json searchCustomer(const SQLite::Database &database, const Api::Parameters &parameters)
{
    const bool byPhone = parameters.contains("Phone");
    const char *const key = byPhone ? "Phone" : "CardNumber";
    allowOnly(parameters, {"Brand", key});
    const std::string &value = parameter(parameters, key);
    const std::string phone = byPhone ? phoneKey(value) : std::string();
    if (byPhone && phone.empty())
        throw Refusal(Refusal::Kind::BadRequest, "Телефон указан неверно, ожидается номер вида +79001234567",
                      "parameter Phone: expected a number like +79001234567; in a URL the plus is %2B");
    const auto found = byPhone ? findByPhone(database, phone) : findByCard(database, value);
    // Without the phone: the text reaches logs, which must not hold whole telephone numbers.
    if (!found)
        throw Refusal(Refusal::Kind::NotFound,
                      byPhone ? "Клиент с таким телефоном не найден" : "Карта «" + value + "» не найдена",
                      byPhone ? "no customer has this phone" : "card " + value + " is unknown");
    return {{"CustAccount", found->account},
            {"LastName", found->lastName},
            {"FirstName", found->firstName},
            {"MiddleName", found->middleName},
            {"BirthDate", found->birthDate},
            {"Gender", found->gender},
            {"Email", found->email},
            {"Phone", found->phone},
            {"CardNumber", byPhone ? found->cards.front() : value}};
}

Customer customerOf(const SQLite::Database &database, const Api::Parameters &parameters)
{
    allowOnly(parameters, {"Brand", "CardNumber", "CustAccountNum"});
    const std::string &card = parameter(parameters, "CardNumber");
    const std::string &account = parameter(parameters, "CustAccountNum");
    const auto found = findByCard(database, card);
    if (!found || found->account != account)
        throw Refusal(Refusal::Kind::NotFound, "Карта «" + card + "» клиента «" + account + "» не найдена",
                      "customer " + account + " has no card " + card);
    return *found;
}

Json cardInfo(const SQLite::Database &database, const Api::Parameters &parameters)
{
    Json tiers = Json::array();
    for (const Tier &tier : customerOf(database, parameters).tiers)
        tiers.push_back({{"Name", tier.name}, {"Discount", tier.discount}});
    return {{"Tiers", tiers}};
}

Json orderResult(const Order &order)
{
    Json redeemed = Json::array();
    for (const StoredLine &line : order.lines)
        if (line.points > 0)
            redeemed.push_back({{"lineId", line.lineId}, {"points", toNumber(line.points)}});
    return {{"basket", order.basket}, {"earnPoints", toNumber(order.earned)}, {"redeemPoints", redeemed}};
}

} // namespace

Answer refusal(int status, const std::string &message, const std::string &reason)
{
    return {status, {{"success", false}, {"message", message}}, reason};
}

std::vector<std::string> Api::methods()
{
    std::vector<std::string> names(queries.begin(), queries.end());
    names.insert(names.end(), orderMethods.begin(), orderMethods.end());
    names.emplace_back(messageMethod);
    return names;
}

Answer Api::query(const std::string &method, const Parameters &parameters)
{
    return guarded("data", [&] { return runQuery(method, parameters); });
}

Answer Api::post(const std::string &method, const std::string &body)
{
    if (method == messageMethod)
        return guarded("data", [&] { return runMessage(parseObject(body)); });
    return guarded("result", [&] { return runOrder(method, parseObject(body)); });
}

Json Api::runQuery(const std::string &method, const Parameters &parameters)
{
    checkBrand(parameter(parameters, "Brand"));
    return m_database.read([&](const SQLite::Database &database) -> Json {
        if (method == "searchCustomer")
            return searchCustomer(database, parameters);
        if (method == "cardInfo")
            return cardInfo(database, parameters);
        return {{"AmountQty", toNumber(customerOf(database, parameters).balance)}};
    });
}

Json Api::runOrder(const std::string &method, const Json &body)
{
    const auto basketCall = [&](auto operation, const BasketRequest &request) {
        checkBrand(request.brand);
        return m_database.write([&](const SQLite::Database &database) { return operation(database, request); });
    };
    if (method == "bindOrderId")
        return orderResult(basketCall(bindOrderId, readBinding(body)));
    if (method == "cancelOrder")
        return orderResult(basketCall(cancelOrder, readCancellation(body)));

    static const std::map<std::string, Order (*)(const SQLite::Database &, const OrderRequest &)> operations{
        {"calculateOrder", calculateOrder},
        {"createOrder", createOrder},
        {"updateOrder", updateOrder},
        {"postOrder", postOrder}};
    const OrderRequest request = readOrder(body);
    checkBrand(request.brand);
    return orderResult(
        m_database.write([&](const SQLite::Database &database) { return operations.at(method)(database, request); }));
}

Json Api::runMessage(const Json &body)
{
    const MessageRequest message = readMessage(body);
    checkBrand(message.brand);
    return {{"messageId",
             m_database.write([&](const SQLite::Database &database) { return keepMessage(database, message); })}};
}

void Api::checkBrand(const std::string &brand) const
{
    if (!m_brand.empty() && brand != m_brand)
        throw Refusal(Refusal::Kind::BadRequest, "Бренд «" + brand + "» не обслуживается",
                      "brand " + brand + " is not served");
}

} // namespace sim
