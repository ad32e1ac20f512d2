// The bodies that the service receives, read and checked field by field. Strict on purpose: this is the judge of
// the client's wire format, so a missing, misspelt, extra or wrongly typed field is refused with its name.
#pragma once

#include "fields.h"

#include <string>
#include <vector>

namespace sim {

struct OrderLine
{
    int lineId = 0;
    Kopecks amount = 0;          ///< before points and before the payment discount
    Kopecks paymentDiscount = 0; ///< at most amount
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

/// The body as a JSON object. Throws Refusal (BadRequest) when it is not one.
Json parseObject(const std::string &body);

/// Each throws Refusal (BadRequest) naming the field, e.g. orderLines[2].lineAmount.
OrderRequest readOrder(const Json &body);
BasketRequest readBinding(const Json &body);
BasketRequest readCancellation(const Json &body);
MessageRequest readMessage(const Json &body);

/// Normalizes a telephone number for comparison: the leading plus and the digits, without blanks, brackets and hyphens.
/// Empty when there is no leading plus, when another character occurs, or when there are not 10 to 15 digits.
std::string phoneKey(const std::string &text);

} // namespace sim
