// Checks the ledger against what the orders' life cycle promises.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>
#include <vector>

namespace sim {

/// One sentence per fault; empty if there is none.
std::vector<std::string> auditLedger(const SQLite::Database &database);

} // namespace sim
