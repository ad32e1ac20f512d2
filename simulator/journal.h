// The till's journal: its own account of finished checks.
#pragma once

#include "money.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace sim {

struct JournalLine
{
    int lineId = 0;
    Kopecks amount = 0; ///< before points and payment discounts, as the order carries it
    Points spent = 0;
};

struct JournalCheck
{
    std::string check;   ///< the check's identifier, "orderID" on the wire
    bool closed = false; ///< otherwise voided
    std::string card;
    std::string basket; ///< empty when no order was ever asked for
    std::vector<JournalLine> lines;
    Points spent = 0;
    Points earned = 0;
};

/// Reads JSON lines; the last object for a check wins. By check identifier.
/// Throws std::runtime_error naming file, line and field.
std::map<std::string, JournalCheck> readJournal(const std::filesystem::path &file);

} // namespace sim
