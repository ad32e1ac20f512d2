// Reads and writes orders as rows, whatever state follows which.
#pragma once

#include "wire.h"

#include <SQLiteCpp/Database.h>

#include <optional>
#include <string>
#include <vector>

namespace sim {

enum class State { Calculated, Created, Updated, Posted, Bound, Cancelled };

/// The state's word in the ledger, e.g. "created".
const char *toText(State state);

struct StoredLine
{
    int lineId{};
    Kopecks amount{};
    Kopecks paymentDiscount{};
    Points points{}; ///< offered while calculated, reserved while created, spent once posted; otherwise 0
};

struct Order
{
    std::string basket;
    std::string account;
    std::string card;
    State state = State::Calculated;
    std::string body;    ///< the accepted body, canonical; empty if cancelled before it was calculated
    std::string orderId; ///< the check's identifier once bound
    Points earned{};
    std::vector<StoredLine> lines;

    Kopecks amount() const; ///< before points and payment discounts
    Points points() const;  ///< of all lines
    bool isPosted() const { return state == State::Posted || state == State::Bound; }
    /// Points taken from the balance and not spent yet.
    Points reserved() const { return state == State::Created ? points() : 0; }
};

std::optional<Order> findOrder(const SQLite::Database &database, const std::string &basket);

/// All orders, oldest first.
std::vector<Order> allOrders(const SQLite::Database &database);

/// The `last` newest orders, oldest first.
std::vector<Order> lastOrders(const SQLite::Database &database, int last);

/// A change in the life of an order, with its sums from then on.
struct OrderStep
{
    std::string state;
    Kopecks amount{};
    Points points{};
    Points earned{};
    std::string at; ///< UTC
};

/// The order's steps so far, oldest first.
std::vector<OrderStep> stepsOf(const SQLite::Database &database, const std::string &basket);

/// Replaces what is stored for the order's basket, lines included, and adds a step.
void storeOrder(const SQLite::Database &database, const Order &order);

} // namespace sim
