// The service's customers: who they are, their cards and tiers, and the points they own.
#pragma once

#include "money.h"

#include <SQLiteCpp/Database.h>

#include <optional>
#include <string>
#include <vector>

namespace sim {

struct Tier
{
    std::string name;
    int discount = 0; ///< the percentage earned; below 0 for a tier that does not apply to the customer
};

struct Customer
{
    std::string account;
    std::string lastName;
    std::string firstName;
    std::string middleName;
    std::string birthDate; ///< "yyyy-MM-dd HH:mm:ss" or empty
    int gender = 0;        ///< 1 male, 2 female, 0 not told
    std::string email;
    std::string phone; ///< as phoneKey() gives it
    Points balance = 0;
    std::vector<std::string> cards;
    std::vector<Tier> tiers;
};

/// The customer with this telephone number, account or card; nothing when there is none.
std::optional<Customer> findByPhone(const SQLite::Database &database, const std::string &phone);
std::optional<Customer> findByAccount(const SQLite::Database &database, const std::string &account);
std::optional<Customer> findByCard(const SQLite::Database &database, const std::string &card);

/// All customers, by account.
std::vector<Customer> allCustomers(const SQLite::Database &database);

/// Adds the customers whose account is new and leaves the others as they are; the number added.
/// Throws std::runtime_error naming the account when a phone or card belongs to somebody else already.
int addCustomers(const SQLite::Database &database, const std::vector<Customer> &customers);

/// What the customer's tier earns, in percent: that of the last tier that applies, 0 without one.
int earnPercent(const Customer &customer);

/// Changes the balance and writes the movement for it; nothing when points are 0. An empty basket: no order.
/// Throws SQLite::Exception when the balance would fall below 0.
void move(const SQLite::Database &database, const std::string &account, const std::string &basket, const char *kind,
          Points points);

} // namespace sim
