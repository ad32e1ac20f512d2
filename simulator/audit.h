// Is the ledger in itself right? Everything that the life cycle promises, looked up in the tables.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>
#include <vector>

namespace sim {

/// One sentence for each thing that is wrong; empty when nothing is.
std::vector<std::string> auditLedger(const SQLite::Database &database);

} // namespace sim
