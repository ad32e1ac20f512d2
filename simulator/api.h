// The service's two APIs without HTTP: a method's name and its input give a status and an envelope.
#pragma once

#include "database.h"
#include "fields.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace sim {

/// An answer as it is sent: {"success": true, "data": ...}, {"success": true, "result": ...} or a refusal.
struct Answer
{
    int status = 200;
    Json body;
    std::string reason = {}; ///< of a refusal, in English; empty otherwise
};

/// {"success": false, "message": message}
Answer refusal(int status, const std::string &message, const std::string &reason = {});

/// Thread-safe. Every call is one transaction, committed before it returns. Throws nothing but std::bad_alloc:
/// refusals and failures of the database (status 500, the reason on stderr) are answers.
class Api
{
public:
    using Parameters = std::multimap<std::string, std::string>;

    static constexpr const char *loyaltyPath = "/api/ax/xpp/v1/";
    static constexpr const char *messagePath = "/api/twofa/msg/v1/";
    static constexpr std::array queries{"searchCustomer", "cardInfo", "loyaltyBalanceInfo"};
    static constexpr std::array orderMethods{"calculateOrder", "createOrder", "updateOrder",
                                             "postOrder",      "bindOrderId", "cancelOrder"};
    static constexpr const char *messageMethod = "send";

    /// The names of all methods.
    static std::vector<std::string> methods();

    /// Answers only requests of this brand; of any brand if it is empty. The database must outlive the object.
    Api(Database &database, std::string brand) : m_database(database), m_brand(std::move(brand)) {}

    /// One of `queries`, with its decoded URL parameters.
    Answer query(const std::string &method, const Parameters &parameters);

    /// One of `orderMethods` or `messageMethod`, with its body.
    Answer post(const std::string &method, const std::string &body);

private:
    Json runQuery(const std::string &method, const Parameters &parameters);
    Json runOrder(const std::string &method, const Json &body);
    Json runMessage(const Json &body);
    void checkBrand(const std::string &brand) const;

    Database &m_database;
    std::string m_brand;
};

} // namespace sim
