// The service's customers with their cards, tiers and points.
#pragma once

#include "money.h"

#include <SQLiteCpp/Database.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sim {

struct Tier
{
    static constexpr int notApplied = -1;

    std::string name;
    int discount{}; ///< the percentage earned; `notApplied` for a tier that the customer is not in
};

struct Customer
{
    std::string account;
    std::string lastName;
    std::string firstName;
    std::string middleName;
    std::string birthDate; ///< "yyyy-MM-dd HH:mm:ss", or empty
    int gender{};          ///< 1 male, 2 female, 0 unknown
    std::string email;
    std::string phone; ///< as phoneKey() gives it
    Points balance{};
    std::vector<std::string> cards;
    std::vector<Tier> tiers;
};

/// The customer with this telephone number, account or card; empty if there is none.
std::optional<Customer> findByPhone(const SQLite::Database &database, const std::string &phone);
std::optional<Customer> findByAccount(const SQLite::Database &database, const std::string &account);
std::optional<Customer> findByCard(const SQLite::Database &database, const std::string &card);

/// All customers, by account.
std::vector<Customer> allCustomers(const SQLite::Database &database);

/// A phone or card that belongs to another customer already.
struct TakenByAnother : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Adds the customers whose account is new and leaves the others as they are; the number added.
/// Throws TakenByAnother, which names the account.
int addCustomers(const SQLite::Database &database, const std::vector<Customer> &customers);

/// The percentage that the customer earns: that of the last tier that applies, 0 without one.
int earnPercent(const Customer &customer);

/// Changes the balance and records the movement; does nothing for 0 points. An empty basket means no order.
/// Throws SQLite::Exception if the balance would fall below 0.
void move(const SQLite::Database &database, const std::string &account, const std::string &basket, const char *kind,
          Points points);

} // namespace sim
