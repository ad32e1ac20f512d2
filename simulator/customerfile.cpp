// Reads customers from JSON; the field names are those of the service's answers.
#include "customerfile.h"

#include "wire.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace sim {

namespace {

constexpr const char *samples = R"([
  {"CustAccount": "C-0001", "LastName": "Иванова", "FirstName": "Мария", "MiddleName": "Петровна",
   "BirthDate": "1990-05-17 00:00:00", "Gender": 2, "Email": "ivanova@example.org", "Phone": "+79001234567",
   "Cards": ["7770000000001", "7770000000018"], "Balance": "1500.00",
   "Tiers": [{"Name": "Бронза", "Discount": -1}, {"Name": "Серебро", "Discount": 5}, {"Name": "Золото", "Discount": -1}]},
  {"CustAccount": "C-0002", "LastName": "Петров", "FirstName": "Алексей", "Gender": 1, "Phone": "+79007654321",
   "Cards": ["7770000000025"],
   "Tiers": [{"Name": "Бронза", "Discount": 3}, {"Name": "Серебро", "Discount": -1}, {"Name": "Золото", "Discount": -1}]},
  {"CustAccount": "C-0003", "LastName": "Сидорова", "FirstName": "Анна", "MiddleName": "Сергеевна",
   "BirthDate": "1984-12-01 00:00:00", "Gender": 2, "Email": "sidorova@example.org", "Phone": "+79161112233",
   "Cards": ["7770000000032"], "Balance": "320.55",
   "Tiers": [{"Name": "Бронза", "Discount": -1}, {"Name": "Серебро", "Discount": -1}, {"Name": "Золото", "Discount": 7}]}
])";

std::string textOr(const Fields &fields, const char *name)
{
    return fields.has(name) ? fields.text(name) : std::string();
}

void readCards(const Fields &fields, Customer &customer)
{
    for (const Json &card : fields.array("Cards")) {
        if (!card.is_string() || card.get<std::string>().empty())
            refuseField(fields.path("Cards"), "expected card numbers");
        const auto number = card.get<std::string>();
        if (std::ranges::find(customer.cards, number) != customer.cards.end())
            refuseField(fields.path("Cards"), number + " occurs twice");
        customer.cards.push_back(number);
    }
    if (customer.cards.empty())
        refuseField(fields.path("Cards"), "expected at least one card");
}

void readTiers(const Fields &fields, Customer &customer)
{
    for (const Json &object : fields.array("Tiers")) {
        const Fields tier(object, fields.path("Tiers[" + std::to_string(customer.tiers.size()) + "]"),
                          {"Name", "Discount"});
        customer.tiers.push_back({tier.filledText("Name"), tier.number("Discount", Tier::notApplied, 100)});
    }
}

std::vector<Customer> readCustomers(const Json &array)
{
    if (!array.is_array())
        throw std::runtime_error("not a JSON array of customers");
    std::vector<Customer> customers;
    for (const Json &object : array) {
        const std::string where = "[" + std::to_string(customers.size()) + "]";
        const Customer customer = readCustomer(object, where);
        if (std::ranges::find(customers, customer.account, &Customer::account) != customers.end())
            refuseField(where + ".CustAccount", customer.account + " occurs twice");
        customers.push_back(customer);
    }
    return customers;
}

} // namespace

Customer readCustomer(const Json &object, const std::string &where)
{
    const Fields fields(object, where,
                        {"CustAccount", "LastName", "FirstName", "MiddleName", "BirthDate", "Gender", "Email", "Phone",
                         "Cards", "Tiers", "Balance"});
    Customer customer;
    customer.account = fields.filledText("CustAccount");
    customer.lastName = fields.filledText("LastName");
    customer.firstName = fields.filledText("FirstName");
    customer.middleName = textOr(fields, "MiddleName");
    customer.birthDate = textOr(fields, "BirthDate");
    customer.gender = fields.has("Gender") ? fields.number("Gender", 0, 2) : 0;
    customer.email = textOr(fields, "Email");
    customer.phone = phoneKey(fields.text("Phone"));
    if (customer.phone.empty())
        refuseField(fields.path("Phone"), "expected a number like +79001234567");
    customer.balance = fields.has("Balance") ? fields.money("Balance") : 0;
    readCards(fields, customer);
    if (fields.has("Tiers"))
        readTiers(fields, customer);
    return customer;
}

std::vector<Customer> readCustomerFile(const std::filesystem::path &file)
try {
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error("cannot be read");
    return readCustomers(
        Json::parse(stream, [keys = RepeatedKeys()](int, Json::parse_event_t event, const Json &part) mutable {
            if (!keys(event, part))
                throw std::runtime_error("the key " + part.dump() + " is given twice in one object");
            return true;
        }));
} catch (const std::exception &error) {
    throw std::runtime_error(file.string() + ": " + error.what());
}

std::vector<Customer> sampleCustomers()
{
    return readCustomers(Json::parse(samples));
}

} // namespace sim
