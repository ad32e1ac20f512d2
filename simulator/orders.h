// The life of an order: what each operation does in each state. README.md has the table.
#pragma once

#include "orderstore.h"

namespace sim {

/// Each runs inside a transaction of the caller, and throws Refusal before it has changed anything. Each is idempotent:
/// the same request again gives the same order and changes nothing.

/// Prices the order and books nothing. If the order exists already, it is not changed.
Order calculateOrder(const SQLite::Database &database, const OrderRequest &request);

/// Creates or replaces the order and reserves the points that its lines pay.
Order createOrder(const SQLite::Database &database, const OrderRequest &request);

/// Re-prices an order for new lines without redemption and gives back what was reserved.
Order updateOrder(const SQLite::Database &database, const OrderRequest &request);

/// Books the order for good; the request must be the order as last accepted.
Order postOrder(const SQLite::Database &database, const OrderRequest &request);

/// Attaches the check's identifier to a posted order.
Order bindOrderId(const SQLite::Database &database, const BasketRequest &request);

/// Ends an order that is not posted, even an unknown one, and gives back what was reserved.
Order cancelOrder(const SQLite::Database &database, const BasketRequest &request);

} // namespace sim
