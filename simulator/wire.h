// Reads and checks the bodies that the service receives, field by field. Strict on purpose: it judges the client's wire
// format, so it refuses a missing, misspelt, extra or wrongly typed field by name.
#pragma once

#include "fields.h"

#include <string>
#include <vector>

namespace sim {

struct OrderLine
{
    int lineId{};
    Kopecks amount{};          ///< before points and before the payment discount
    Kopecks paymentDiscount{}; ///< at most amount
    bool isSale = false;
    bool noDiscount = false;
    bool noEarn = false;
};

/// Body of calculateOrder, createOrder, updateOrder and postOrder.
struct OrderRequest
{
    std::string brand;
    std::string card;
    std::string basket;
    std::vector<OrderLine> lines;
    std::string body; ///< the whole body in a canonical form: equal bodies have equal texts
};

/// Body of bindOrderId and, without orderId, of cancelOrder.
struct BasketRequest
{
    std::string brand;
    std::string card;
    std::string basket;
    std::string orderId;
};

/// Body of the message API's send.
struct MessageRequest
{
    std::string brand;
    std::string phone;
    std::string text;
};

/// The body as a JSON object. Throws Refusal (BadRequest) if it is not one.
Json parseObject(const std::string &body);

/// Each throws Refusal (BadRequest) naming the field, e.g. orderLines[2].lineAmount.
OrderRequest readOrder(const Json &body);
BasketRequest readBinding(const Json &body);
BasketRequest readCancellation(const Json &body);
MessageRequest readMessage(const Json &body);

/// Normalizes a telephone number for comparison: the leading plus and the digits, without blanks, brackets and hyphens.
/// Empty if there is no leading plus, another character, or a number of digits other than 10 to 15.
std::string phoneKey(const std::string &text);

} // namespace sim
