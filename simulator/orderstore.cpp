#include "orderstore.h"

#include "database.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace sim {

namespace {

constexpr std::array<const char *, 6> stateTexts{"calculated", "created", "updated", "posted", "bound", "cancelled"};

constexpr const char *selectOrder =
    "SELECT basket, account, card, state, body, ifnull(order_id, ''), earned FROM orders ";

State toState(const std::string &text)
{
    for (std::size_t i = 0; i < stateTexts.size(); ++i)
        if (text == stateTexts[i])
            return static_cast<State>(i);
    throw std::runtime_error("unknown order state " + text);
}

Order readOrderRow(const SQLite::Database &database, SQLite::Statement &row)
{
    Order order{.basket = row.getColumn(0).getString(),
                .account = row.getColumn(1).getString(),
                .card = row.getColumn(2).getString(),
                .state = toState(row.getColumn(3).getString()),
                .body = row.getColumn(4).getString(),
                .orderId = row.getColumn(5).getString(),
                .earned = row.getColumn(6).getInt64(),
                .lines = {}};
    auto line = prepare(database,
                        "SELECT line_id, amount, payment_discount, points FROM order_lines WHERE basket = ?"
                        " ORDER BY position",
                        order.basket);
    while (line.executeStep())
        order.lines.push_back({line.getColumn(0).getInt(), line.getColumn(1).getInt64(), line.getColumn(2).getInt64(),
                               line.getColumn(3).getInt64()});
    return order;
}

} // namespace

const char *toText(State state)
{
    return stateTexts.at(static_cast<std::size_t>(state));
}

Kopecks Order::amount() const
{
    Kopecks sum = 0;
    for (const StoredLine &line : lines)
        sum += line.amount;
    return sum;
}

Points Order::points() const
{
    Points sum = 0;
    for (const StoredLine &line : lines)
        sum += line.points;
    return sum;
}

std::optional<Order> findOrder(const SQLite::Database &database, const std::string &basket)
{
    auto row = prepare(database, (std::string(selectOrder) + "WHERE basket = ?").c_str(), basket);
    if (!row.executeStep())
        return std::nullopt;
    return readOrderRow(database, row);
}

std::vector<Order> allOrders(const SQLite::Database &database)
{
    return lastOrders(database, std::numeric_limits<int>::max());
}

std::vector<Order> lastOrders(const SQLite::Database &database, int last)
{
    std::vector<Order> orders;
    auto row = prepare(database, (std::string(selectOrder) + "ORDER BY rowid DESC LIMIT ?").c_str(), last);
    while (row.executeStep())
        orders.push_back(readOrderRow(database, row));
    std::ranges::reverse(orders);
    return orders;
}

std::vector<OrderStep> stepsOf(const SQLite::Database &database, const std::string &basket)
{
    std::vector<OrderStep> steps;
    auto row = prepare(
        database, "SELECT state, amount, points, earned, at FROM order_steps WHERE basket = ? ORDER BY id", basket);
    while (row.executeStep())
        steps.push_back({row.getColumn(0).getString(), row.getColumn(1).getInt64(), row.getColumn(2).getInt64(),
                         row.getColumn(3).getInt64(), row.getColumn(4).getString()});
    return steps;
}

void storeOrder(const SQLite::Database &database, const Order &order)
{
    execute(database,
            "INSERT INTO orders VALUES (?, ?, ?, ?, ?, nullif(?, ''), ?, strftime('%Y-%m-%d %H:%M:%f', 'now'))"
            " ON CONFLICT (basket) DO UPDATE SET state = excluded.state, body = excluded.body,"
            " order_id = excluded.order_id, earned = excluded.earned, changed_at = excluded.changed_at",
            order.basket, order.account, order.card, toText(order.state), order.body, order.orderId, order.earned);
    execute(database,
            "INSERT INTO order_steps (basket, state, amount, points, earned, at)"
            " SELECT ?1, ?2, ?3, ?4, ?5, strftime('%Y-%m-%d %H:%M:%f', 'now') WHERE NOT EXISTS ("
            "  SELECT 1 FROM (SELECT * FROM order_steps WHERE basket = ?1 ORDER BY id DESC LIMIT 1)"
            "  WHERE state = ?2 AND amount = ?3 AND points = ?4 AND earned = ?5)",
            order.basket, toText(order.state), order.amount(), order.points(), order.earned);
    execute(database, "DELETE FROM order_lines WHERE basket = ?", order.basket);
    for (int position = 0; const StoredLine &line : order.lines)
        execute(database, "INSERT INTO order_lines VALUES (?, ?, ?, ?, ?, ?)", order.basket, position++, line.lineId,
                line.amount, line.paymentDiscount, line.points);
}

} // namespace sim
