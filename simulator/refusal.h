// Why the service refuses a request: in Russian for the cashier, in English for developers.
#pragma once

#include <stdexcept>
#include <string>

namespace sim {

/// Thrown by every step of a request; the transaction is rolled back and the API turns it into an answer.
class Refusal : public std::runtime_error
{
public:
    enum class Kind {
        BadRequest, ///< the request itself is wrong: status 400, "success" false, "message"
        NotFound,   ///< no such customer, card or order: status 404, "success" false, "message"
        Rule        ///< understood, but the order's life does not allow it: status 200, "error" with a code
    };

    Refusal(Kind kind, std::string forCashier, const std::string &reason, int code = 0)
        : std::runtime_error(reason), m_kind(kind), m_forCashier(std::move(forCashier)), m_code(code)
    {}

    Kind kind() const { return m_kind; }
    /// The text of the answer; what() is the reason in English.
    const std::string &forCashier() const { return m_forCashier; }
    /// The "errorCode" of a broken rule, above 0; 0 for the other kinds.
    int code() const { return m_code; }

private:
    Kind m_kind;
    std::string m_forCashier;
    int m_code;
};

/// The codes of broken rules.
namespace rule {
inline constexpr int cancelled = 101;
inline constexpr int posted = 102;
inline constexpr int notCreated = 103;
inline constexpr int otherBody = 104;
inline constexpr int notPosted = 105;
inline constexpr int otherOrderId = 106;
inline constexpr int otherCard = 107;
} // namespace rule

} // namespace sim
