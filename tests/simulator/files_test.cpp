// The files that the program reads, customers and journal: good ones, and errors that name file, place and field.
#include "journal.h"
#include "simulator_fixture.h"

#include <fstream>

namespace sim {

class Files : public testing::Test
{
protected:
    std::string written(const std::string &text)
    {
        std::ofstream(file) << text;
        return file;
    }

    Folder folder;
    const std::string file = folder / "input.json";
    const Json customer = Json::parse(R"({"CustAccount": "C-9", "LastName": "Орлов", "FirstName": "Пётр",
        "Phone": "+7 (911) 222-33-44", "Cards": ["1", "2"], "Balance": "10.50",
        "Tiers": [{"Name": "A", "Discount": 4}]})");
    const Json check = Json::parse(R"({"check": "A", "outcome": "closed", "card": "7", "basket": "a", "spent": "10.00",
        "earned": "2.43", "lines": [{"lineId": 1, "amount": "91.00", "spent": "10.00"}]})");
};

TEST_F(Files, AddACustomerOnceAndThenLeaveThemAlone)
{
    Database database(folder / "ledger.db", Database::Access::Serve);
    const auto customers = readCustomerFile(written(Json{customer}.dump()));
    const auto add = [&](const SQLite::Database &connection) { return addCustomers(connection, customers); };
    EXPECT_EQ(database.write(add), 1);
    database.write([](const SQLite::Database &connection) { return move(connection, "C-9", "", "earn", 50), 0; });
    EXPECT_EQ(database.write(add), 0);
    const auto found = database.read([](const auto &connection) { return findByPhone(connection, "+79112223344"); });
    ASSERT_TRUE(found);
    EXPECT_EQ(found->balance, 1100);
    EXPECT_EQ(found->cards, (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(earnPercent(*found), 4);
}

TEST_F(Files, GiveTheLastStateOfACheck)
{
    Json voided = check;
    voided["outcome"] = "voided";
    const auto checks = readJournal(written(voided.dump() + '\n' + check.dump() + '\n'));
    ASSERT_EQ(checks.size(), 1u);
    EXPECT_TRUE(checks.at("A").closed);
    EXPECT_EQ(checks.at("A").lines.at(0).amount, 9100);
}

TEST_F(Files, NameThePlaceOfAMistake)
{
    const auto names = [](const char *place, const char *field) {
        return ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(place), HasSubstr(field)));
    };
    const std::pair<const char *, const char *> customers[] = {
        {R"({"Phone": "79112223344"})", "[0].Phone"}, {R"({"Cards": []})", "[0].Cards"},
        {R"({"Balance": 10.5})", "[0].Balance"},      {R"({"Tiers": [{"Name": "A"}]})", "[0].Tiers[0].Discount"},
        {R"({"Ballance": "1.00"})", "[0].Ballance"},
    };
    for (const auto &[patch, field] : customers) {
        Json wrong = customer;
        wrong.merge_patch(Json::parse(patch));
        EXPECT_THAT([&] { readCustomerFile(written(Json{wrong}.dump())); }, names("input.json: ", field));
    }
    const std::pair<const char *, const char *> checks[] = {
        {R"({"outcome": "sold"})", "outcome"}, {R"({"spent": 10})", "spent"}, {R"({"lines": [1]})", "lines[0]"}};
    for (const auto &[patch, field] : checks) {
        Json wrong = check;
        wrong.merge_patch(Json::parse(patch));
        EXPECT_THAT([&] { readJournal(written(check.dump() + '\n' + wrong.dump())); }, names("input.json:2: ", field));
    }
    EXPECT_THAT([&] { readCustomerFile(written("[{")); }, names("input.json: ", "parse error"));
    EXPECT_THAT([&] { readJournal(written("{")); }, names("input.json:1: ", "parse error"));
}

} // namespace sim
