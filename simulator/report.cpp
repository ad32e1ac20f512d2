// The ledger as JSON and as text.
#include "report.h"

#include "customers.h"
#include "database.h"
#include "orderstore.h"
#include "outbox.h"
#include "plaintext.h"

#include <algorithm>

namespace sim {

namespace {

Json toJson(const Customer &customer)
{
    Json tiers = Json::array();
    for (const Tier &tier : customer.tiers)
        tiers.push_back({{"Name", tier.name}, {"Discount", tier.discount}});
    return {{"CustAccount", customer.account},
            {"LastName", customer.lastName},
            {"FirstName", customer.firstName},
            {"MiddleName", customer.middleName},
            {"Phone", customer.phone},
            {"Cards", customer.cards},
            {"Tiers", tiers},
            {"Balance", formatHundredths(customer.balance)}};
}

Json toJson(const OrderStep &step)
{
    return {{"state", step.state},
            {"amount", formatHundredths(step.amount)},
            {"points", formatHundredths(step.points)},
            {"earned", formatHundredths(step.earned)},
            {"at", step.at}};
}

Json toJson(const Order &order, const std::vector<OrderStep> &steps)
{
    Json lines = Json::array();
    for (const StoredLine &line : order.lines)
        lines.push_back({{"lineId", line.lineId},
                         {"amount", formatHundredths(line.amount)},
                         {"paymentDiscount", formatHundredths(line.paymentDiscount)},
                         {"points", formatHundredths(line.points)}});
    Json life = Json::array();
    for (const OrderStep &step : steps)
        life.push_back(toJson(step));
    return {{"basket", order.basket},
            {"account", order.account},
            {"card", order.card},
            {"state", toText(order.state)},
            {"orderId", order.orderId},
            {"amount", formatHundredths(order.amount())},
            {"points", formatHundredths(order.points())},
            {"earned", formatHundredths(order.earned)},
            {"lines", lines},
            {"steps", life}};
}

/// Characters, not bytes: names are Cyrillic.
std::size_t width(const std::string &text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::vector<std::vector<std::string>> customerRows(const SQLite::Database &database)
{
    std::vector<std::vector<std::string>> rows{{"ACCOUNT", "NAME", "PHONE", "CARDS", "EARNS", "BALANCE"}};
    for (const Customer &customer : allCustomers(database))
        rows.push_back({customer.account, customer.lastName + " " + customer.firstName, customer.phone,
                        joined(customer.cards, " "), std::to_string(earnPercent(customer)) + " %",
                        formatHundredths(customer.balance)});
    return rows;
}

std::vector<std::vector<std::string>> orderRows(const SQLite::Database &database)
{
    std::vector<std::vector<std::string>> rows{
        {"BASKET", "CARD", "STATE", "LINE", "AMOUNT", "POINTS", "EARNED", "ORDER ID"}};
    for (const Order &order : allOrders(database)) {
        rows.push_back({order.basket, order.card, toText(order.state), "all", formatHundredths(order.amount()),
                        formatHundredths(order.points()), formatHundredths(order.earned), order.orderId});
        for (const StoredLine &line : order.lines)
            rows.push_back({"", "", "", std::to_string(line.lineId), formatHundredths(line.amount),
                            formatHundredths(line.points), "", ""});
    }
    return rows;
}

} // namespace

Json ledgerJson(const SQLite::Database &database, int last)
{
    Json ledger{{"customers", Json::array()}, {"orders", Json::array()}, {"movements", Json::array()}};
    for (const Customer &customer : allCustomers(database))
        ledger["customers"].push_back(toJson(customer));
    for (const Order &order : lastOrders(database, last))
        ledger["orders"].push_back(toJson(order, stepsOf(database, order.basket)));
    auto row = prepare(database,
                       "SELECT * FROM (SELECT id, account, ifnull(basket, ''), kind, points, at FROM movements"
                       " ORDER BY id DESC LIMIT ?) ORDER BY id",
                       last);
    while (row.executeStep())
        ledger["movements"].push_back({{"id", row.getColumn(0).getInt64()},
                                       {"account", row.getColumn(1).getString()},
                                       {"basket", row.getColumn(2).getString()},
                                       {"kind", row.getColumn(3).getString()},
                                       {"points", formatHundredths(row.getColumn(4).getInt64())},
                                       {"at", row.getColumn(5).getString()}});
    return ledger;
}

Json outboxJson(const SQLite::Database &database, const std::string &phone, int last)
{
    Json found = Json::array();
    for (const SentMessage &message : messages(database, phone, last))
        found.push_back({{"id", message.id},
                         {"at", message.at},
                         {"phone", message.phone},
                         {"text", message.text},
                         {"code", codeIn(message.text)}});
    return {{"messages", found}};
}

std::string ledgerText(const SQLite::Database &database)
{
    return table(customerRows(database)) + "\n" + table(orderRows(database));
}

std::string table(std::vector<std::vector<std::string>> rows)
{
    for (auto &row : rows)
        std::ranges::transform(row, row.begin(), plainText);
    std::vector<std::size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], width(row[i]));
    }
    std::string text;
    for (const auto &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - width(row[i]) + 2, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

} // namespace sim
