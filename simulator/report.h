// The ledger as people and tests read it.
#pragma once

#include "fields.h"

#include <SQLiteCpp/Database.h>

#include <limits>
#include <string>
#include <vector>

namespace sim {

/// {"customers": [...], "orders": [...], "movements": [...]} with the `last` newest orders and movements, oldest first;
/// sums are texts with two decimals.
Json ledgerJson(const SQLite::Database &database, int last = std::numeric_limits<int>::max());

/// {"messages": [{"id", "at", "phone", "text", "code"}]}: the `last` newest to a number, or to all with an empty one;
/// oldest first.
Json outboxJson(const SQLite::Database &database, const std::string &phone, int last);

/// The customers and the orders with their lines, as tables for a terminal.
std::string ledgerText(const SQLite::Database &database);

/// Rows in aligned columns, two blanks apart, each on one line whatever is in it. The first row is the heading.
std::string table(std::vector<std::vector<std::string>> rows);

} // namespace sim
