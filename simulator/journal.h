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
    int lineId{};
    Kopecks amount{}; ///< before points and payment discounts, as the order carries it
    Points spent{};
};

struct JournalCheck
{
    std::string check;   ///< the check's identifier, "orderID" on the wire
    bool closed = false; ///< otherwise voided
    std::string card;
    std::string basket; ///< empty if no order was ever asked for
    std::vector<JournalLine> lines;
    Points spent{};
    Points earned{};
};

/// Reads JSON lines into a map by check identifier; the last object for a check wins.
/// Throws std::runtime_error naming file, line and field.
std::map<std::string, JournalCheck> readJournal(const std::filesystem::path &file);

} // namespace sim
