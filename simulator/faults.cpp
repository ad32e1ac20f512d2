// The list of faults and its JSON form.
#include "faults.h"

#include "plaintext.h"

#include <algorithm>

namespace sim {

namespace {

int numberOr(int fallback, const Fields &fields, const char *name, int lowest, int highest)
{
    return fields.has(name) ? fields.number(name, lowest, highest) : fallback;
}

double readShare(const Fields &fields)
{
    const Json &share = fields.value("share");
    if (!share.is_number() || !(share.get<double>() > 0 && share.get<double>() <= 1))
        refuseField("share", "expected a number above 0, up to 1");
    return share.get<double>();
}

/// Rejects fields that the kind does not use.
void allowOnlyFor(const char *kind, const Fields &fields, std::initializer_list<const char *> names)
{
    for (const char *name : names)
        if (fields.has(name) && fields.text("kind") != kind)
            refuseField(name, std::string("goes only with the kind ") + kind);
}

std::string readAnswer(const Fields &fields)
{
    if (!fields.has("body"))
        return R"({"success":false,"message":"Сервис временно недоступен"})";
    const Json &body = fields.value("body");
    return body.is_string() ? body.get<std::string>() : body.dump();
}

Json toJson(const Fault &fault)
{
    Json json{{"id", fault.id}, {"method", fault.method}, {"kind", fault.kind}, {"hits", fault.hits}};
    if (fault.times)
        json["times"] = *fault.times;
    else
        json["share"] = fault.share;
    if (fault.kind == "status")
        json.update({{"status", fault.status}, {"body", fault.body}});
    if (fault.kind == "delay")
        json["milliseconds"] = fault.delay.count();
    return json;
}

} // namespace

Faults::Faults(std::vector<std::string> methods, std::vector<FaultKind> kinds, Feed &feed, std::uint64_t seed)
    : m_methods(std::move(methods)), m_kinds(std::move(kinds)), m_feed(feed), m_random(seed)
{}

int Faults::add(const Json &fault)
{
    Fault added = read(fault);
    const std::scoped_lock lock(m_mutex);
    added.id = ++m_lastId;
    m_faults.push_back(added);
    m_feed.touch();
    return added.id;
}

Fault Faults::read(const Json &body) const
{
    const Fields fields(body, "", {"method", "kind", "times", "share", "status", "body", "milliseconds"});
    Fault fault;
    fault.method = readMethod(fields);
    fault.kind = readKind(fields);
    if (fields.has("share") && fields.has("times"))
        refuseField("share", "goes without times");
    if (fields.has("share"))
        fault.share = readShare(fields);
    else
        fault.times = numberOr(1, fields, "times", 1, 1'000'000);
    allowOnlyFor("status", fields, {"status", "body"});
    fault.status = numberOr(500, fields, "status", 200, 599);
    fault.body = readAnswer(fields);
    allowOnlyFor("delay", fields, {"milliseconds"});
    fault.delay = std::chrono::milliseconds(numberOr(1000, fields, "milliseconds", 0, 600'000));
    return fault;
}

std::string Faults::readMethod(const Fields &fields) const
{
    std::string method = fields.text("method");
    if (method != "*" && std::ranges::find(m_methods, method) == m_methods.end())
        refuseField("method", "unknown; expected * or one of " + joined(m_methods, ", "));
    return method;
}

std::string Faults::readKind(const Fields &fields) const
{
    std::string kind = fields.text("kind");
    std::vector<std::string> known;
    for (const FaultKind &each : m_kinds)
        known.push_back(each.name);
    if (std::ranges::find(known, kind) == known.end())
        refuseField("kind", "unknown; expected one of " + joined(known, ", "));
    return kind;
}

bool Faults::remove(int id)
{
    const std::scoped_lock lock(m_mutex);
    const bool found = std::erase_if(m_faults, [id](const Fault &fault) { return fault.id == id; }) > 0;
    m_feed.touch();
    return found;
}

void Faults::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_faults.clear();
    m_feed.touch();
}

std::optional<Fault> Faults::take(const std::string &method,
                                  const std::function<bool(const std::string &kind)> &possible)
{
    const std::scoped_lock lock(m_mutex);
    const auto found = std::ranges::find_if(m_faults, [&](const Fault &fault) {
        return (fault.method == "*" || fault.method == method) && (!possible || possible(fault.kind)) && hits(fault);
    });
    if (found == m_faults.end())
        return std::nullopt;
    ++found->hits;
    const Fault fault = *found;
    if (found->times && --*found->times == 0)
        m_faults.erase(found);
    m_feed.touch();
    return fault;
}

bool Faults::hits(const Fault &fault)
{
    return std::bernoulli_distribution(fault.share)(m_random);
}

Json Faults::toJson() const
{
    Json kinds = Json::array();
    for (const FaultKind &kind : m_kinds)
        kinds.push_back({{"name", kind.name}, {"does", kind.does}});
    const std::scoped_lock lock(m_mutex);
    Json faults = Json::array();
    for (const Fault &fault : m_faults)
        faults.push_back(sim::toJson(fault));
    return {{"methods", m_methods}, {"kinds", kinds}, {"faults", faults}};
}

void Faults::wait(std::chrono::milliseconds delay)
{
    std::unique_lock lock(m_mutex);
    m_released.wait_for(lock, delay, [this] { return m_stopping; });
}

void Faults::release()
{
    const std::scoped_lock lock(m_mutex);
    m_stopping = true;
    m_released.notify_all();
}

} // namespace sim
