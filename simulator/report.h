// The ledger as people and tests read it.
#pragma once

#include "fields.h"

#include <SQLiteCpp/Database.h>

#include <string>
#include <vector>

namespace sim {

/// {"customers": [...], "orders": [...], "movements": [...]}; sums are texts with two decimals.
Json ledgerJson(const SQLite::Database &database);

/// {"messages": [{"id", "at", "phone", "text"}]} to a number, or all with an empty one; oldest first.
Json outboxJson(const SQLite::Database &database, const std::string &phone);

/// The customers and the orders with their lines, as tables for a terminal.
std::string ledgerText(const SQLite::Database &database);

/// Rows in aligned columns, two blanks apart. The first row is the heading.
std::string table(const std::vector<std::vector<std::string>> &rows);

} // namespace sim
