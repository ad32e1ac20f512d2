// Checks the ledger against everything that the life cycle promises.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>
#include <vector>

namespace sim {

/// One sentence for each fault; empty when there is none.
std::vector<std::string> auditLedger(const SQLite::Database &database);

} // namespace sim
