// Reads request bodies; the header says why it is strict.
#include "wire.h"

#include "refusal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace sim {

namespace {

constexpr int deepest = 64; // levels; the JSON library writes a value by recursion

OrderLine readOrderLine(const Json &object, const std::string &where)
{
    const Fields fields(object, where,
                        {"barcode", "lineID", "qty", "lineAmount", "isSale", "noDiscountAllowed", "noEarnAllowed",
                         "paymentDiscAmount"});
    OrderLine line;
    fields.text("barcode");
    if (fields.text("qty") != "1")
        refuseField(fields.path("qty"), "ожидается 1", "expected 1: the amount carries the quantity");
    line.lineId = fields.positiveNumber("lineID");
    line.amount = fields.money("lineAmount");
    line.isSale = fields.flag("isSale");
    line.noDiscount = fields.flag("noDiscountAllowed");
    line.noEarn = fields.flag("noEarnAllowed");
    line.paymentDiscount = fields.money("paymentDiscAmount");
    if (line.paymentDiscount > line.amount)
        refuseField(fields.path("paymentDiscAmount"), "больше суммы строки", "more than lineAmount");
    return line;
}

void checkDate(const std::string &text)
{
    const bool isShaped = std::ranges::equal(text, std::string_view("0000-00-00"), [](char character, char place) {
        return place == '-' ? character == '-' : character >= '0' && character <= '9';
    });
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    using namespace std::chrono;
    if (!isShaped || std::sscanf(text.c_str(), "%4d-%2u-%2u", &year, &month, &day) != 3 ||
        !year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)).ok())
        refuseField("basketDatetime", "ожидается дата вида ГГГГ-ММ-ДД", "expected a date like 2024-02-29");
}

BasketRequest readBasket(const Fields &fields)
{
    fields.text("onlineStore");
    fields.text("terminal");
    return {fields.text("brand"), fields.filledText("cardNumber"), fields.filledText("basket"), {}};
}

} // namespace

Json parseObject(const std::string &body)
{
    const auto checkDepth = [keys = RepeatedKeys()](int depth, Json::parse_event_t event, const Json &part) mutable {
        if (depth > deepest)
            throw Refusal(Refusal::Kind::BadRequest, "Тело запроса вложено слишком глубоко",
                          "the body is nested deeper than " + std::to_string(deepest) + " levels");
        if (!keys(event, part))
            throw Refusal(Refusal::Kind::BadRequest, "Ключ " + part.dump() + " указан дважды в одном объекте",
                          "the key " + part.dump() + " is given twice in one object");
        return true;
    };
    Json object = Json::parse(body, checkDepth, false);
    if (!object.is_object())
        throw Refusal(Refusal::Kind::BadRequest, "Тело запроса не является объектом JSON",
                      "the body is not a JSON object");
    return object;
}

OrderRequest readOrder(const Json &body)
{
    const Fields fields(body, "",
                        {"brand", "cardNumber", "onlineStore", "basket", "basketDatetime", "orderLines",
                         "paymentDiscAmount", "terminal"});
    const BasketRequest head = readBasket(fields);
    checkDate(fields.text("basketDatetime"));
    OrderRequest order{head.brand, head.card, head.basket,
                       readLines(fields.array("orderLines"), "orderLines", readOrderLine), body.dump()};
    Kopecks sum = 0;
    for (const OrderLine &line : order.lines)
        sum += line.paymentDiscount;
    // A client may round each of these sums by itself, by half a kopeck at most.
    const auto mostTwice = static_cast<Kopecks>(order.lines.size()) + 1;
    if (2 * std::abs(fields.money("paymentDiscAmount") - sum) > mostTwice)
        refuseField("paymentDiscAmount", "не равно сумме по строкам " + formatHundredths(sum),
                    "differs from the sum of the lines, " + formatHundredths(sum));
    return order;
}

BasketRequest readBinding(const Json &body)
{
    const Fields fields(body, "", {"brand", "cardNumber", "onlineStore", "basket", "orderID", "terminal"});
    BasketRequest request = readBasket(fields);
    request.orderId = fields.filledText("orderID");
    return request;
}

BasketRequest readCancellation(const Json &body)
{
    return readBasket(Fields(body, "", {"brand", "cardNumber", "onlineStore", "basket", "terminal"}));
}

MessageRequest readMessage(const Json &body)
{
    const Fields fields(body, "", {"brand", "phone", "text", "channel"});
    if (fields.text("channel") != "sms")
        refuseField("channel", "поддерживается только sms", "only sms is supported");
    MessageRequest message{fields.text("brand"), phoneKey(fields.text("phone")), fields.filledText("text")};
    if (message.phone.empty())
        refuseField("phone", "ожидается номер вида +79001234567", "expected a number like +79001234567");
    return message;
}

std::string phoneKey(const std::string &text)
{
    if (text.empty() || text.front() != '+')
        return {};
    std::string key = "+";
    for (const char character : text.substr(1)) {
        if (character >= '0' && character <= '9')
            key += character;
        else if (std::string_view(" ()-").find(character) == std::string_view::npos)
            return {};
    }
    const std::size_t digits = key.size() - 1;
    return digits >= 10 && digits <= 15 ? key : std::string();
}

} // namespace sim
