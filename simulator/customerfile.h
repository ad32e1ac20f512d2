// Customers from a JSON file, and the sample customers of a new ledger.
#pragma once

#include "customers.h"
#include "fields.h"

#include <filesystem>
#include <vector>

namespace sim {

/// Reads and checks the file; its form is described in README.md.
/// Throws std::runtime_error naming file, entry and field, e.g. "shop.json: [2].Phone: ...".
std::vector<Customer> readCustomerFile(const std::filesystem::path &file);

/// One customer of that form. `where` is the object's path in its document. Throws Refusal naming the field.
Customer readCustomer(const Json &object, const std::string &where);

/// Three customers to try the service with; listed in README.md.
std::vector<Customer> sampleCustomers();

} // namespace sim
