// Importing customers: a good file, and errors that name file, entry and field.
#include "customer_file.h"
#include "simulator_fixture.h"

#include <gmock/gmock.h>

#include <fstream>

namespace sim {

namespace {

using testing::HasSubstr;

constexpr const char *good = R"([{"CustAccount": "C-9", "LastName": "Орлов", "FirstName": "Пётр",
    "Phone": "+7 (911) 222-33-44", "Cards": ["1", "2"], "Balance": "10.50", "Tiers": [{"Name": "A", "Discount": 4}]}])";

class CustomerFile : public testing::Test
{
protected:
    std::vector<Customer> read(const std::string &text)
    {
        std::ofstream(file) << text;
        return readCustomerFile(file);
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "shop.json";
};

TEST_F(CustomerFile, IsAddedOnceAndThenLeftAlone)
{
    Database database(directory / "ledger.db", Database::Access::Serve);
    const auto add = [&] {
        const auto customers = read(good);
        return database.write([&](const SQLite::Database &connection) { return addCustomers(connection, customers); });
    };
    EXPECT_EQ(add(), 1);
    database.write([](const SQLite::Database &connection) { return move(connection, "C-9", "", "earn", 50), 0; });
    EXPECT_EQ(add(), 0);
    const auto found = database.read(
        [](const SQLite::Database &connection) { return findByPhone(connection, "+79112223344").value(); });
    EXPECT_EQ(found.balance, 1100);
    EXPECT_EQ(found.cards, (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(earnPercent(found), 4);
}

struct FileCase : Case
{
    const char *patch; ///< RFC 7396 merge patch of the good customer
    const char *named;
};

const FileCase fileCases[] = {
    {"NoAccount", R"({"CustAccount": null})", "[0].CustAccount"},
    {"PhoneWithoutPlus", R"({"Phone": "79112223344"})", "[0].Phone"},
    {"NoCards", R"({"Cards": []})", "[0].Cards"},
    {"CardIsANumber", R"({"Cards": [1]})", "[0].Cards"},
    {"BalanceIsANumber", R"({"Balance": 10.5})", "[0].Balance"},
    {"GenderIsAText", R"({"Gender": "1"})", "[0].Gender"},
    {"TierWithoutDiscount", R"({"Tiers": [{"Name": "A"}]})", "[0].Tiers[0].Discount"},
    {"Misspelt", R"({"Ballance": "1.00"})", "[0].Ballance"},
};

class WrongCustomer : public CustomerFile, public testing::WithParamInterface<FileCase>
{
};

TEST_P(WrongCustomer, IsNamed)
{
    Json customers = Json::parse(good);
    customers[0].merge_patch(Json::parse(GetParam().patch));
    try {
        read(customers.dump());
        FAIL() << "was accepted";
    } catch (const std::runtime_error &error) {
        EXPECT_THAT(error.what(), testing::AllOf(HasSubstr("shop.json"), HasSubstr(GetParam().named)));
    }
}

INSTANTIATE_TEST_SUITE_P(Fields, WrongCustomer, testing::ValuesIn(fileCases), caseName);

TEST_F(CustomerFile, MustBeReadableJson)
{
    EXPECT_THROW(readCustomerFile(file), std::runtime_error);
    EXPECT_THROW(read("[{"), std::runtime_error);
    EXPECT_THROW(read("{}"), std::runtime_error);
}

} // namespace

} // namespace sim
