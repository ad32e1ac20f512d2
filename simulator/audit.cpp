// The ledger's invariants. Sums come from the movements, not from the code that wrote them.
#include "audit.h"

#include "customers.h"
#include "database.h"
#include "orderstore.h"

namespace sim {

namespace {

Points movedFor(const SQLite::Database &database, const char *sql, const std::string &key)
{
    auto row = prepare(database, sql, key);
    row.executeStep();
    return row.getColumn(0).getInt64();
}

/// What an order in its state must have moved on the balance, all its movements together.
Points expectedMovement(const Order &order)
{
    return order.isPosted() ? order.earned - order.points() : -order.reserved();
}

void auditCustomers(const SQLite::Database &database, std::vector<std::string> &faults)
{
    for (const Customer &customer : allCustomers(database)) {
        const Points moved =
            movedFor(database, "SELECT ifnull(sum(points), 0) FROM movements WHERE account = ?", customer.account);
        if (moved != customer.balance)
            faults.push_back("customer " + customer.account + ": balance " + formatHundredths(customer.balance) +
                             ", movements " + formatHundredths(moved));
        if (customer.balance < 0)
            faults.push_back("customer " + customer.account + ": balance below zero");
    }
}

void auditLines(const Order &order, std::vector<std::string> &faults)
{
    for (const StoredLine &line : order.lines)
        if (line.points > line.amount - line.paymentDiscount)
            faults.push_back("order " + order.basket + ": line " + std::to_string(line.lineId) +
                             " is paid with more points than it costs");
}

void auditOrders(const SQLite::Database &database, std::vector<std::string> &faults)
{
    for (const Order &order : allOrders(database)) {
        const Points moved =
            movedFor(database, "SELECT ifnull(sum(points), 0) FROM movements WHERE basket = ?", order.basket);
        if (moved != expectedMovement(order))
            faults.push_back("order " + order.basket + " (" + toText(order.state) + "): movements " +
                             formatHundredths(moved) + ", expected " + formatHundredths(expectedMovement(order)));
        if ((order.state == State::Bound) == order.orderId.empty())
            faults.push_back("order " + order.basket + " (" + toText(order.state) + "): order id '" + order.orderId +
                             "' does not fit the state");
        auditLines(order, faults);
    }
}

} // namespace

std::vector<std::string> auditLedger(const SQLite::Database &database)
{
    std::vector<std::string> faults;
    auditCustomers(database, faults);
    auditOrders(database, faults);
    return faults;
}

} // namespace sim
