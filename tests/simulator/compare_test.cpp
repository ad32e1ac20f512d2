// The comparison of till and ledger: each kind of difference is found, and nothing else is.
#include "compare.h"
#include "simulator_fixture.h"

#include <gmock/gmock.h>

#include <fstream>
#include <functional>

namespace sim {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// What both sides have in the tests below, before one of them is changed.
struct Sides
{
    std::map<std::string, JournalCheck> journal;
    std::vector<Order> orders;
    std::set<std::string> open;

    Sides()
    {
        journal["A"] = {"A", true, "7", "a", {{1, 9100, 1000}, {2, 500, 0}}, 1000, 243};
        orders.push_back({"a", "C", "7", State::Bound, "{}", "A", 243, {{1, 9100, 0, 1000}, {2, 500, 0, 0}}});
    }

    JournalCheck &check() { return journal["A"]; }
    Order &order() { return orders[0]; }
    void addOrder(const char *basket, State state, Points points, const char *orderId = "")
    {
        orders.push_back({basket, "C", "7", state, "{}", orderId, 0, {{1, 9100, 0, points}}});
    }
    void addVoided(const char *basket) { journal["V"] = {"V", false, "7", basket, {}, 0, 0}; }
};

struct CompareCase : Case
{
    std::function<void(Sides &)> change;
    const char *difference; ///< a part of the finding; empty when the sides are equal
};

const CompareCase compareCases[] = {
    {"Equal", [](Sides &) {}, ""},
    {"ClosedWithoutOrder", [](Sides &s) { s.orders.clear(); }, "no order"},
    {"Unposted", [](Sides &s) { s.order().state = State::Created; }, "not posted"},
    {"Unbound", [](Sides &s) { s.order().state = State::Posted; }, "not bound"},
    {"BoundToAnother", [](Sides &s) { s.order().orderId = "B"; }, "bound to check B"},
    {"OtherCard", [](Sides &s) { s.order().card = "8"; }, "card 7 at the till, 8 at the service"},
    {"LineMissing", [](Sides &s) { s.order().lines.pop_back(); }, "2 lines at the till, 1"},
    {"OtherLine", [](Sides &s) { s.order().lines[1].lineId = 3; }, "line 2 is unknown"},
    {"LineAmount", [](Sides &s) { s.order().lines[1].amount = 501; }, "line 2 amount 5.00 at the till, 5.01"},
    {"LineSpent", [](Sides &s) { s.check().lines[0].spent = 999; }, "line 1 spent 9.99 at the till, 10.00"},
    {"Spent", [](Sides &s) { s.check().spent = 0; }, "spent 0.00 at the till, 10.00"},
    {"Earned", [](Sides &s) { s.check().earned = 244; }, "earned 2.44 at the till, 2.43"},
    {"SecondOrderOfTheCheck", [](Sides &s) { s.addOrder("b", State::Bound, 0, "A"); }, "order b is bound to this"},
    {"SharedBasket", [](Sides &s) { s.addVoided("a"); }, "another check has the same basket"},
    {"PostedForNobody", [](Sides &s) { s.addOrder("b", State::Posted, 0); }, "no closed check claims it"},
    {"ReservedForNobody", [](Sides &s) { s.addOrder("b", State::Created, 5); }, "reserved for no open check"},
    {"ReservedForAnOpenCheck", [](Sides &s) { s.addOrder("b", State::Created, 5), s.open = {"b"}; }, ""},
    {"NothingReserved", [](Sides &s) { s.addOrder("b", State::Updated, 0); }, ""},
    {"VoidedAndAbsent", [](Sides &s) { s.addVoided("v"); }, ""},
    {"VoidedAndCalculated", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Calculated, 5); }, ""},
    {"VoidedAndCancelled", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Cancelled, 0); }, ""},
    {"VoidedAndCreated", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Created, 0); }, "is created"},
    {"VoidedAndPosted", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Posted, 0); }, "is posted"},
    {"NoBasketNoOrder", [](Sides &s) { s.addVoided(""); }, ""},
    {"NoBasketButBound", [](Sides &s) { s.addVoided(""), s.addOrder("b", State::Bound, 0, "V"); }, "order b is bound"},
};

class Compare : public testing::TestWithParam<CompareCase>
{
};

TEST_P(Compare, FindsTheDifference)
{
    Sides sides;
    GetParam().change(sides);
    const auto rows = compare(sides.journal, sides.orders, sides.open);
    EXPECT_GE(rows.size(), sides.journal.size());
    std::vector<std::string> found;
    for (const ComparedRow &row : rows)
        found.insert(found.end(), row.differences.begin(), row.differences.end());
    if (*GetParam().difference)
        EXPECT_THAT(found, testing::Contains(HasSubstr(GetParam().difference)));
    else
        EXPECT_THAT(found, IsEmpty());
    EXPECT_EQ(comparisonText(rows).find("DIFFERENT") == std::string::npos, found.empty());
}

INSTANTIATE_TEST_SUITE_P(Sides, Compare, testing::ValuesIn(compareCases), caseName);

class Journal : public testing::Test
{
protected:
    auto read(const std::string &text)
    {
        std::ofstream(file) << text;
        return readJournal(file);
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "till.jsonl";
    const std::string good = R"({"check": "A", "outcome": "closed", "card": "7", "basket": "a", "spent": "10.00",)"
                             R"( "earned": "2.43", "lines": [{"lineId": 1, "amount": "91.00", "spent": "10.00"}]})";
};

TEST_F(Journal, TakesTheLastObjectOfACheck)
{
    const std::string voided =
        Json::parse(good).patch(Json::parse(R"([{"op": "replace", "path": "/outcome", "value": "voided"}])")).dump();
    const auto checks = read(voided + "\n" + good + "\n");
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_TRUE(checks.at("A").closed);
    EXPECT_EQ(checks.at("A").lines.at(0).amount, 9100);
    EXPECT_TRUE(read("").empty());
}

TEST_F(Journal, NamesLineAndFieldOfAnError)
{
    Json doubled = Json::parse(good);
    doubled["lines"].push_back(doubled["lines"][0]);
    const std::pair<std::string, const char *> wrong[] = {
        {"{", "till.jsonl:2"},
        {R"({"check": "A"})", "outcome"},
        {Json::parse(good).patch(Json::parse(R"([{"op": "add", "path": "/spent", "value": 10}])")).dump(), "spent"},
        {doubled.dump(), "lines[1]"},
    };
    for (const auto &[text, named] : wrong) {
        try {
            read(good + "\n" + text + "\n");
            ADD_FAILURE() << text;
        } catch (const std::runtime_error &error) {
            EXPECT_THAT(error.what(), testing::AllOf(HasSubstr("till.jsonl:2"), HasSubstr(named)));
        }
    }
    EXPECT_THROW(readJournal(directory / "absent"), std::runtime_error);
}

} // namespace

} // namespace sim
