#include "customers.h"

#include "database.h"

#include <stdexcept>

namespace sim {

namespace {

constexpr const char *selectCustomer =
    "SELECT account, last_name, first_name, middle_name, birth_date, gender, email, phone,"
    " balance FROM customers ";

Customer readCustomerRow(const SQLite::Database &database, SQLite::Statement &row)
{
    Customer customer;
    customer.account = row.getColumn(0).getString();
    customer.lastName = row.getColumn(1).getString();
    customer.firstName = row.getColumn(2).getString();
    customer.middleName = row.getColumn(3).getString();
    customer.birthDate = row.getColumn(4).getString();
    customer.gender = row.getColumn(5).getInt();
    customer.email = row.getColumn(6).getString();
    customer.phone = row.getColumn(7).getString();
    customer.balance = row.getColumn(8).getInt64();
    auto card = prepare(database, "SELECT number FROM cards WHERE account = ? ORDER BY position", customer.account);
    while (card.executeStep())
        customer.cards.push_back(card.getColumn(0).getString());
    auto tier =
        prepare(database, "SELECT name, discount FROM tiers WHERE account = ? ORDER BY position", customer.account);
    while (tier.executeStep())
        customer.tiers.push_back({tier.getColumn(0).getString(), tier.getColumn(1).getInt()});
    return customer;
}

std::optional<Customer> find(const SQLite::Database &database, const char *condition, const std::string &value)
{
    auto row = prepare(database, (std::string(selectCustomer) + condition).c_str(), value);
    if (!row.executeStep())
        return std::nullopt;
    return readCustomerRow(database, row);
}

void add(const SQLite::Database &database, const Customer &customer)
{
    execute(database, "INSERT INTO customers VALUES (?, ?, ?, ?, ?, ?, ?, ?, 0)", customer.account, customer.lastName,
            customer.firstName, customer.middleName, customer.birthDate, customer.gender, customer.email,
            customer.phone);
    for (int i = 0; const std::string &card : customer.cards)
        execute(database, "INSERT INTO cards VALUES (?, ?, ?)", card, customer.account, i++);
    for (int i = 0; const Tier &tier : customer.tiers)
        execute(database, "INSERT INTO tiers VALUES (?, ?, ?, ?)", customer.account, i++, tier.name, tier.discount);
    move(database, customer.account, {}, "opening", customer.balance);
}

} // namespace

std::optional<Customer> findByPhone(const SQLite::Database &database, const std::string &phone)
{
    return find(database, "WHERE phone = ?", phone);
}

std::optional<Customer> findByAccount(const SQLite::Database &database, const std::string &account)
{
    return find(database, "WHERE account = ?", account);
}

std::optional<Customer> findByCard(const SQLite::Database &database, const std::string &card)
{
    return find(database, "WHERE account = (SELECT account FROM cards WHERE number = ?)", card);
}

std::vector<Customer> allCustomers(const SQLite::Database &database)
{
    std::vector<Customer> customers;
    auto row = prepare(database, (std::string(selectCustomer) + "ORDER BY account").c_str());
    while (row.executeStep())
        customers.push_back(readCustomerRow(database, row));
    return customers;
}

int addCustomers(const SQLite::Database &database, const std::vector<Customer> &customers)
{
    int added = 0;
    for (const Customer &customer : customers) {
        if (findByAccount(database, customer.account))
            continue;
        if (findByPhone(database, customer.phone))
            throw TakenByAnother("customer " + customer.account + ": the phone belongs to another customer");
        for (const std::string &card : customer.cards)
            if (findByCard(database, card))
                throw TakenByAnother("customer " + customer.account + ": card " + card +
                                     " belongs to another customer");
        add(database, customer);
        ++added;
    }
    return added;
}

int earnPercent(const Customer &customer)
{
    int percent = 0;
    for (const Tier &tier : customer.tiers)
        if (tier.discount >= 0)
            percent = tier.discount;
    return percent;
}

void move(const SQLite::Database &database, const std::string &account, const std::string &basket, const char *kind,
          Points points)
{
    if (points == 0)
        return;
    execute(database, "UPDATE customers SET balance = balance + ? WHERE account = ?", points, account);
    execute(database,
            "INSERT INTO movements (account, basket, kind, points, at)"
            " VALUES (?, nullif(?, ''), ?, ?, strftime('%Y-%m-%d %H:%M:%f', 'now'))",
            account, basket, kind, points);
}

} // namespace sim
