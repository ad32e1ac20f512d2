// What /sim/ answers; see README.md.
#include "admin.h"

#include "customerfile.h"
#include "outbox.h"
#include "refusal.h"
#include "report.h"
#include "wire.h"

#include <charconv>
#include <limits>

namespace sim {

namespace {

/// The URL's "last", how many of the newest are wanted; without it all.
int lastOf(const httplib::Request &request)
{
    if (!request.has_param("last"))
        return std::numeric_limits<int>::max();
    const std::string text = request.get_param_value("last");
    int last = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), last);
    if (error != std::errc() || end != text.data() + text.size() || last < 0)
        refuseField("last", "expected a whole number");
    return last;
}

Json outbox(Database &database, const httplib::Request &request)
{
    const std::string asked = request.get_param_value("phone");
    const std::string phone = phoneKey(asked);
    if (phone.empty() && !asked.empty())
        refuseField("phone", "expected a number like +79001234567; in a URL the plus is %2B");
    const int last = lastOf(request);
    return database.read([&](const SQLite::Database &connection) { return outboxJson(connection, phone, last); });
}

} // namespace

Admin::Admin(Database &database, const RequestLog &log, Faults &faults, Feed &feed)
    : m_database(database), m_log(log), m_faults(faults), m_feed(feed), m_events(database, log, faults, feed)
{}

void Admin::addRoutes(AdminRoutes &routes)
{
    routes.addView("/sim/outbox", [this](const auto &request) { return outbox(m_database, request); });
    routes.addView("/sim/ledger", [this](const auto &request) {
        const int last = lastOf(request);
        return m_database.read([&](const SQLite::Database &connection) { return ledgerJson(connection, last); });
    });
    routes.addView("/sim/requests", [this](const auto &) { return m_log.toJson(); });
    routes.addGet("/sim/events", [this](const auto &request, auto &response) { m_events.serve(request, response); });
    routes.addChange("/sim/customers", [this](const Json &body) { return addCustomer(body); });
    routes.addChange("/sim/balance", [this](const Json &body) { return setBalance(body); });
    routes.addFaults("/sim/faults", m_faults);
}

Json Admin::addCustomer(const Json &body)
{
    const Customer customer = readCustomer(body, "");
    const int added = m_database.write([&](const SQLite::Database &connection) {
        try {
            return addCustomers(connection, {customer});
        } catch (const TakenByAnother &error) {
            throw Refusal(Refusal::Kind::BadRequest, error.what(), error.what());
        }
    });
    if (added == 0)
        refuseField("CustAccount", customer.account + " exists already");
    m_feed.touch();
    return Json::object();
}

Json Admin::setBalance(const Json &body)
{
    const Fields fields(body, "", {"account", "balance"});
    const std::string account = fields.filledText("account");
    const Points balance = fields.money("balance");
    m_database.write([&](const SQLite::Database &connection) {
        const auto customer = findByAccount(connection, account);
        if (!customer)
            refuseField("account", "there is no customer " + account);
        move(connection, account, {}, "adjust", balance - customer->balance);
        return true;
    });
    m_feed.touch();
    return {{"balance", formatHundredths(balance)}};
}

} // namespace sim
