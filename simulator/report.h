// Prints the ledger for people and tests.
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

/// {"messages": [{"id", "at", "phone", "text", "code"}]}: the `last` newest to a number, or to all if it is empty;
/// oldest first.
Json outboxJson(const SQLite::Database &database, const std::string &phone, int last);

/// The customers and the orders with their lines, as tables for a terminal.
std::string ledgerText(const SQLite::Database &database);

/// Aligned columns, two blanks apart, each row on one line whatever it contains. The first row is the heading.
std::string table(std::vector<std::vector<std::string>> rows);

} // namespace sim
