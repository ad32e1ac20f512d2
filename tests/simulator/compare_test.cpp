// The comparison of till and ledger: each kind of difference is found, and nothing else is.
#include "compare.h"
#include "simulatorfixture.h"

#include <functional>

namespace sim {

/// What both sides have, before a case changes one of them.
struct Sides
{
    std::map<std::string, JournalCheck> journal{
        {"A", {"A", true, "7", "a", {{1, 9100, 1000}, {2, 500, 0}}, 1000, 243}}};
    std::vector<Order> orders{{"a", "C", "7", State::Bound, "{}", "A", 243, {{1, 9100, 0, 1000}, {2, 500, 0, 0}}}};
    std::set<std::string> open;

    JournalCheck &check() { return journal["A"]; }
    Order &order() { return orders[0]; }
    void addOrder(const char *basket, State state, Points points, const char *orderId = "")
    {
        orders.push_back({basket, "C", "7", state, "{}", orderId, 0, {{1, 9100, 0, points}}});
    }
    void addVoided(const char *basket) { journal["V"] = {"V", false, "7", basket, {}, 0, 0}; }
};

TEST(Compare, FindsEachDifference)
{
    // What is changed, and a part of what is said about it.
    const std::tuple<const char *, std::function<void(Sides &)>, const char *> cases[] = {
        {"equal", [](Sides &) {}, "1 order  96.00     96.00    10.00       10.00    2.43         2.43     all equal\n"},
        {"voided before it had an order", [](Sides &s) { s.addVoided("v"); }, "1 order  96.00"},
        {"closed without order", [](Sides &s) { s.orders.clear(); }, "no order"},
        {"unposted", [](Sides &s) { s.order().state = State::Created; }, "not posted"},
        {"unbound", [](Sides &s) { s.order().state = State::Posted; }, "not bound"},
        {"bound to another", [](Sides &s) { s.order().orderId = "B"; }, "bound to check B"},
        {"other card", [](Sides &s) { s.order().card = "8"; }, "card 7 at the till, 8 at the service"},
        {"line missing", [](Sides &s) { s.order().lines.pop_back(); }, "2 lines at the till, 1"},
        {"other line", [](Sides &s) { s.order().lines[1].lineId = 3; }, "line 2 is unknown"},
        {"line's amount", [](Sides &s) { s.order().lines[1].amount++; }, "line 2 amount 5.00 at the till, 5.01"},
        {"line's points", [](Sides &s) { s.check().lines[0].spent--; }, "line 1 spent 9.99 at the till, 10.00"},
        {"spent", [](Sides &s) { s.check().spent = 0; }, "spent 0.00 at the till, 10.00"},
        {"earned", [](Sides &s) { s.check().earned++; }, "earned 2.44 at the till, 2.43"},
        {"second order", [](Sides &s) { s.addOrder("b", State::Bound, 0, "A"); }, "order b is bound to this"},
        {"shared basket", [](Sides &s) { s.addVoided("a"); }, "another check has the same basket"},
        {"posted for nobody", [](Sides &s) { s.addOrder("b", State::Posted, 0); }, "no closed check claims it"},
        {"reserved for nobody", [](Sides &s) { s.addOrder("b", State::Created, 5); }, "reserved for no open check"},
        {"reserved for an open check", [](Sides &s) { s.addOrder("b", State::Created, 5), s.open = {"b"}; },
         "all equal"},
        {"voided but created", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Created, 0); }, "is created"},
        {"voided but posted", [](Sides &s) { s.addVoided("v"), s.addOrder("v", State::Posted, 0); }, "is posted"},
        {"voided, bound", [](Sides &s) { s.addVoided(""), s.addOrder("b", State::Bound, 0, "V"); }, "order b is bound"},
    };
    for (const auto &[name, change, difference] : cases) {
        SCOPED_TRACE(name);
        Sides sides;
        change(sides);
        const std::string text = comparisonText(compare(sides.journal, sides.orders, sides.open), false);
        EXPECT_THAT(text, HasSubstr(difference));
        EXPECT_EQ(text.find("DIFFERENT") == std::string::npos, text.ends_with("all equal\n")) << text;
    }
}

} // namespace sim
