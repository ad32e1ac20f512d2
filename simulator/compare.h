// Compares till and service check by check, to prove that nothing was lost or booked twice.
#pragma once

#include "journal.h"
#include "orderstore.h"

#include <set>
#include <string>
#include <vector>

namespace sim {

/// An order or check as both sides report it.
struct ComparedRow
{
    std::string check;
    std::string basket;
    std::string state; ///< in the ledger, "absent" without an order
    Kopecks tillAmount = 0, serviceAmount = 0;
    Points tillSpent = 0, serviceSpent = 0;
    Points tillEarned = 0, serviceEarned = 0;
    bool counts = false; ///< in the totals: a closed check with an order, or an order that no check claims
    std::vector<std::string> differences; ///< empty: equal
};

/// Compares every check of the journal with the orders, then looks for orders that no check claims. Reserved points
/// are right only for the baskets of `open` checks. Each check of the journal gives a row; so does each unclaimed
/// order that is posted or holds points.
std::vector<ComparedRow> compare(const std::map<std::string, JournalCheck> &journal, const std::vector<Order> &orders,
                                 const std::set<std::string> &open);

/// The rows as a table for a terminal, with "ok" or "DIFFERENT: ..." at the end of each; or only those that differ. The
/// totals come last.
std::string comparisonText(const std::vector<ComparedRow> &rows, bool onlyDifferences);

} // namespace sim
