// The comparison's rules. Each finding is a sentence, so a row explains itself.
#include "compare.h"

#include "plaintext.h"
#include "report.h"

#include <algorithm>

namespace sim {

namespace {

using Differences = std::vector<std::string>;

void compareAmount(Differences &found, const std::string &what, std::int64_t till, std::int64_t service)
{
    if (till != service)
        found.push_back(what + " " + formatHundredths(till) + " at the till, " + formatHundredths(service) +
                        " at the service");
}

void compareLines(Differences &found, const JournalCheck &check, const Order &order)
{
    if (check.lines.size() != order.lines.size()) {
        found.push_back(std::to_string(check.lines.size()) + " lines at the till, " +
                        std::to_string(order.lines.size()) + " at the service");
        return;
    }
    for (const JournalLine &line : check.lines) {
        const std::string name = "line " + std::to_string(line.lineId);
        const auto other = std::find_if(order.lines.begin(), order.lines.end(),
                                        [&](const StoredLine &stored) { return stored.lineId == line.lineId; });
        if (other == order.lines.end()) {
            found.push_back(name + " is unknown to the service");
            continue;
        }
        compareAmount(found, name + " amount", line.amount, other->amount);
        compareAmount(found, name + " spent", line.spent, other->points);
    }
}

void compareClosed(Differences &found, const JournalCheck &check, const Order &order)
{
    if (order.state != State::Bound)
        found.push_back(order.isPosted() ? "posted, but not bound to the check" : "not posted");
    else if (order.orderId != check.check)
        found.push_back("bound to check " + order.orderId);
    if (check.card != order.card)
        found.push_back("card " + check.card + " at the till, " + order.card + " at the service");
    compareLines(found, check, order);
    compareAmount(found, "spent", check.spent, order.points());
    compareAmount(found, "earned", check.earned, order.earned);
}

void compareOutcome(Differences &found, const JournalCheck &check, const Order *order)
{
    if (check.basket.empty())
        return;
    if (check.closed && !order)
        found.push_back("closed, but the service has no order");
    else if (check.closed)
        compareClosed(found, check, *order);
    else if (order && order->state != State::Calculated && order->state != State::Cancelled)
        found.push_back(std::string("voided, but the order is ") + toText(order->state));
}

void addServiceSide(ComparedRow &row, const Order &order)
{
    row.state = toText(order.state);
    row.serviceAmount = order.amount();
    row.serviceSpent = order.points();
    row.serviceEarned = order.earned;
}

ComparedRow compareCheck(const JournalCheck &check, const Order *order, const std::vector<Order> &orders)
{
    ComparedRow row;
    row.check = check.check;
    row.basket = check.basket;
    row.state = "absent";
    for (const JournalLine &line : check.lines)
        row.tillAmount += line.amount;
    row.tillSpent = check.spent;
    row.tillEarned = check.earned;
    row.counts = check.closed && !check.basket.empty();
    if (order)
        addServiceSide(row, *order);
    compareOutcome(row.differences, check, order);
    for (const Order &other : orders)
        if (other.orderId == check.check && other.basket != check.basket)
            row.differences.push_back("order " + other.basket + " is bound to this check as well");
    return row;
}

/// What is wrong with an order that no check of the journal claims; empty if nothing.
std::string strayFault(const Order &order, const std::set<std::string> &open)
{
    if (order.isPosted())
        return "posted, but no closed check claims it";
    if (order.reserved() > 0 && !open.contains(order.basket))
        return "points are reserved for no open check";
    return {};
}

ComparedRow strayRow(const Order &order, const std::string &fault)
{
    ComparedRow row;
    row.check = order.orderId;
    row.basket = order.basket;
    row.counts = true;
    row.differences = {fault};
    addServiceSide(row, order);
    return row;
}

std::string verdictOn(const ComparedRow &row)
{
    return row.differences.empty() ? "ok" : "DIFFERENT: " + joined(row.differences, "; ");
}

std::vector<std::string> cellsOf(const ComparedRow &row, const std::string &verdict)
{
    std::vector<std::string> cells{row.check, row.basket, row.state};
    for (const std::int64_t sum :
         {row.tillAmount, row.serviceAmount, row.tillSpent, row.serviceSpent, row.tillEarned, row.serviceEarned})
        cells.push_back(formatHundredths(sum));
    cells.push_back(verdict);
    return cells;
}

void addTo(ComparedRow &total, const ComparedRow &row)
{
    total.tillAmount += row.tillAmount;
    total.serviceAmount += row.serviceAmount;
    total.tillSpent += row.tillSpent;
    total.serviceSpent += row.serviceSpent;
    total.tillEarned += row.tillEarned;
    total.serviceEarned += row.serviceEarned;
}

} // namespace

std::vector<ComparedRow> compare(const std::map<std::string, JournalCheck> &journal, const std::vector<Order> &orders,
                                 const std::set<std::string> &open)
{
    std::map<std::string, const Order *> byBasket;
    for (const Order &order : orders)
        byBasket[order.basket] = &order;
    std::vector<ComparedRow> rows;
    std::set<std::string> claimed;
    for (const auto &[identifier, check] : journal) {
        const auto order = byBasket.find(check.basket);
        rows.push_back(compareCheck(check, order == byBasket.end() ? nullptr : order->second, orders));
        if (!check.basket.empty() && !claimed.insert(check.basket).second)
            rows.back().differences.emplace_back("another check has the same basket");
    }
    for (const Order &order : orders) {
        const std::string fault = claimed.contains(order.basket) ? std::string() : strayFault(order, open);
        if (!fault.empty())
            rows.push_back(strayRow(order, fault));
    }
    return rows;
}

std::string comparisonText(const std::vector<ComparedRow> &rows, bool onlyDifferences)
{
    std::vector<std::vector<std::string>> cells{
        {"CHECK", "BASKET", "STATE", "SUM till", "service", "SPENT till", "service", "EARNED till", "service", ""}};
    ComparedRow total;
    total.check = "TOTAL";
    int counted = 0;
    std::size_t different = 0;
    for (const ComparedRow &row : rows) {
        if (row.counts) {
            addTo(total, row);
            ++counted;
        }
        different += row.differences.empty() ? 0 : 1;
        if (!onlyDifferences || !row.differences.empty())
            cells.push_back(cellsOf(row, verdictOn(row)));
    }
    total.state = std::to_string(counted) + (counted == 1 ? " order" : " orders");
    cells.push_back(cellsOf(total, different == 0 ? "all equal" : std::to_string(different) + " different"));
    return table(cells);
}

} // namespace sim
