// Reads the journal's lines; README.md describes their form.
#include "journal.h"

#include "fields.h"

#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>

namespace sim {

namespace {

/// Allows the fields that the till keeps for its own receipts, and ignores them.
JournalLine readJournalLine(const Json &object, const std::string &where)
{
    const Fields fields(object, where, {"lineId", "name", "quantity", "price", "amount", "spent"});
    return {fields.number("lineId", 1, std::numeric_limits<int>::max()), fields.money("amount"), fields.money("spent")};
}

JournalCheck readCheck(const Json &object)
{
    const Fields fields(object, "",
                        {"check", "opened", "entered", "outcome", "cashier", "card", "customer", "tier", "balance",
                         "basket", "lines", "spent", "earned"});
    JournalCheck check;
    check.check = fields.filledText("check");
    const std::string outcome = fields.text("outcome");
    if (outcome != "closed" && outcome != "voided")
        refuseField("outcome", "expected closed or voided");
    check.closed = outcome == "closed";
    check.card = fields.text("card");
    check.basket = fields.text("basket");
    check.lines = readLines(fields.array("lines"), "lines", readJournalLine);
    check.spent = fields.money("spent");
    check.earned = fields.money("earned");
    return check;
}

std::map<std::string, JournalCheck> readChecks(std::istream &stream, const std::string &name)
{
    std::map<std::string, JournalCheck> checks;
    std::string text;
    for (int number = 1; std::getline(stream, text); ++number) {
        try {
            JournalCheck check = readCheck(Json::parse(text));
            checks.insert_or_assign(check.check, check);
        } catch (const std::exception &error) {
            throw std::runtime_error(name + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (stream.bad())
        throw std::runtime_error(name + ": cannot be read to its end");
    return checks;
}

} // namespace

std::map<std::string, JournalCheck> readJournal(const std::filesystem::path &file)
{
    if (file == "-")
        return readChecks(std::cin, "standard input");
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error(file.string() + ": cannot be read");
    return readChecks(stream, file.string());
}

} // namespace sim
