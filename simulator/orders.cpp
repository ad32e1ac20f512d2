// The order's life cycle and its bookings. A reservation is a movement of its own, so the balance is always what the
// customer can still spend.
#include "orders.h"

#include "customers.h"
#include "pricing.h"
#include "refusal.h"

namespace sim {

namespace {

[[noreturn]] void refuseState(const std::string &basket, State state)
{
    if (state == State::Cancelled)
        throw Refusal(Refusal::Kind::Rule, "Заказ " + basket + " отменён", "order " + basket + " is cancelled",
                      rule::cancelled);
    if (state == State::Calculated)
        throw Refusal(Refusal::Kind::Rule, "Заказ " + basket + " рассчитан, но не создан",
                      "order " + basket + " is calculated but not created", rule::notCreated);
    throw Refusal(Refusal::Kind::Rule, "Заказ " + basket + " уже проведён", "order " + basket + " is posted already",
                  rule::posted);
}

Customer cardHolder(const SQLite::Database &database, const std::string &card)
{
    const auto customer = findByCard(database, card);
    if (!customer)
        throw Refusal(Refusal::Kind::NotFound, "Карта " + card + " не найдена", "card " + card + " is unknown");
    return *customer;
}

/// The basket's order; empty for a new basket. A basket belongs to one card for good.
std::optional<Order> knownOrder(const SQLite::Database &database, const std::string &basket, const std::string &card)
{
    auto order = findOrder(database, basket);
    if (order && order->card != card)
        throw Refusal(Refusal::Kind::Rule, "Заказ " + basket + " оформлен на другую карту",
                      "order " + basket + " belongs to card " + order->card, rule::otherCard);
    return order;
}

Order existingOrder(const SQLite::Database &database, const std::string &basket, const std::string &card)
{
    cardHolder(database, card);
    auto order = knownOrder(database, basket, card);
    if (!order)
        throw Refusal(Refusal::Kind::NotFound, "Заказ " + basket + " не найден", "order " + basket + " is unknown");
    return *order;
}

bool isOpen(State state)
{
    return state == State::Created || state == State::Updated;
}

/// The order for the request's lines when they pay `spent` and the order earns `earned`.
Order compose(const OrderRequest &request, const std::string &account, State state, const std::vector<Points> &spent,
              Points earned)
{
    Order order{request.basket, account, request.card, state, request.body, {}, earned, {}};
    for (std::size_t i = 0; i < request.lines.size(); ++i) {
        const OrderLine &line = request.lines[i];
        order.lines.push_back({line.lineId, line.amount, line.paymentDiscount, spent[i]});
    }
    return order;
}

void release(const SQLite::Database &database, const Order &order)
{
    move(database, order.account, order.basket, "release", order.reserved());
}

} // namespace

Order calculateOrder(const SQLite::Database &database, const OrderRequest &request)
{
    const Customer customer = cardHolder(database, request.card);
    const auto known = knownOrder(database, request.basket, request.card);
    if (known && known->state != State::Calculated && !isOpen(known->state))
        refuseState(request.basket, known->state);
    // Offers again what this order has reserved: creating it would release that first.
    const auto offered = redeem(request.lines, customer.balance + (known ? known->reserved() : 0));
    const auto earned = earn(request.lines, std::vector<Points>(request.lines.size()), earnPercent(customer));
    Order order = compose(request, customer.account, State::Calculated, offered, earned);
    if (!known || known->state == State::Calculated)
        storeOrder(database, order);
    return order;
}

Order createOrder(const SQLite::Database &database, const OrderRequest &request)
{
    const Customer customer = cardHolder(database, request.card);
    const auto known = knownOrder(database, request.basket, request.card);
    if (known && known->state == State::Created && known->body == request.body)
        return *known;
    if (known && known->state != State::Calculated && !isOpen(known->state))
        refuseState(request.basket, known->state);
    const Points held = known ? known->reserved() : 0;
    const auto spent = redeem(request.lines, customer.balance + held);
    const auto earned = earn(request.lines, spent, earnPercent(customer));
    Order order = compose(request, customer.account, State::Created, spent, earned);
    storeOrder(database, order);
    if (known)
        release(database, *known);
    move(database, order.account, order.basket, "reserve", -order.reserved());
    return order;
}

Order updateOrder(const SQLite::Database &database, const OrderRequest &request)
{
    Order known = existingOrder(database, request.basket, request.card);
    if (known.state == State::Updated && known.body == request.body)
        return known;
    if (!isOpen(known.state))
        refuseState(request.basket, known.state);
    const std::vector<Points> nothing(request.lines.size());
    const auto earned = earn(request.lines, nothing, earnPercent(cardHolder(database, request.card)));
    Order order = compose(request, known.account, State::Updated, nothing, earned);
    storeOrder(database, order);
    release(database, known);
    return order;
}

Order postOrder(const SQLite::Database &database, const OrderRequest &request)
{
    Order order = existingOrder(database, request.basket, request.card);
    if (!isOpen(order.state) && !order.isPosted())
        refuseState(request.basket, order.state);
    if (order.body != request.body)
        throw Refusal(Refusal::Kind::Rule, "Заказ " + request.basket + " был принят в другом виде",
                      "the body differs from the one last accepted for order " + request.basket, rule::otherBody);
    if (order.isPosted())
        return order;
    release(database, order);
    order.state = State::Posted;
    storeOrder(database, order);
    move(database, order.account, order.basket, "spend", -order.points());
    move(database, order.account, order.basket, "earn", order.earned);
    return order;
}

Order bindOrderId(const SQLite::Database &database, const BasketRequest &request)
{
    Order order = existingOrder(database, request.basket, request.card);
    if (order.state == State::Cancelled)
        refuseState(request.basket, order.state);
    if (!order.isPosted())
        throw Refusal(Refusal::Kind::Rule, "Заказ " + request.basket + " ещё не проведён",
                      "order " + request.basket + " is not posted yet", rule::notPosted);
    if (order.state == State::Bound && order.orderId != request.orderId)
        throw Refusal(Refusal::Kind::Rule, "Заказ " + request.basket + " привязан к другому чеку",
                      "order " + request.basket + " is bound to check " + order.orderId, rule::otherOrderId);
    if (order.state == State::Bound)
        return order;
    order.state = State::Bound;
    order.orderId = request.orderId;
    storeOrder(database, order);
    return order;
}

Order cancelOrder(const SQLite::Database &database, const BasketRequest &request)
{
    const Customer customer = cardHolder(database, request.card);
    const auto known = knownOrder(database, request.basket, request.card);
    if (known && known->state == State::Cancelled)
        return *known;
    if (known && known->isPosted())
        refuseState(request.basket, known->state);
    Order order{request.basket, customer.account, request.card, State::Cancelled, {}, {}, 0, {}};
    if (known) {
        release(database, *known);
        order.body = known->body;
        order.lines = known->lines;
        for (StoredLine &line : order.lines)
            line.points = 0;
    }
    storeOrder(database, order);
    return order;
}

} // namespace sim
