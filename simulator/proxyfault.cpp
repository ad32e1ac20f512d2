// The list of faults, and the draw.
#include "proxyfault.h"

#include "api.h"

namespace sim {

namespace {

const std::string any = "any";
const std::string keptOnly = "kept connection ends";

std::vector<ProxyFault> makeFaults()
{
    using enum ProxyFault::Answer;
    std::vector<ProxyFault> faults{
        {"latency", true, Late},   {"low bandwidth", true, Slow},    {"slow drip", true, Dripping},
        {"answer cut", true, Cut}, {"malformed JSON", true, Halved}, {"connection refused", false, Refused},
        {keptOnly, true, Closed},  {"body missing", true, Bare},
    };
    const auto add = [&faults](const ProxyFault &fault) {
        for (const bool processed : {false, true}) {
            faults.push_back(fault);
            faults.back().name += processed ? ", processed" : ", not processed";
            faults.back().processed = processed;
        }
    };
    add({"reset", false, Reset});
    add({"time-out", false, Nothing});
    add({"status 500 with a page", false, Replaced, 500, "text/html", "<html>Internal Server Error</html>"});
    add({"status 500 without a body", false, Replaced, 500, "text/plain", ""});
    add({"status 404 with JSON", false, Replaced, 404, "application/json", R"({"message": "no route"})"});
    for (const int status : {200, 400, 404, 500})
        add({"refusal with " + std::to_string(status), false, Replaced, status, "application/json",
             R"({"success": false, "message": "Forged refusal"})"});
    return faults;
}

std::vector<FaultKind> kinds()
{
    std::vector<FaultKind> kinds{{any, "one of the others, drawn for each request"}};
    for (const ProxyFault &fault : allProxyFaults())
        kinds.push_back(
            {fault.name, fault.processed ? "the service has got the request" : "the service has not got the request"});
    return kinds;
}

} // namespace

const std::vector<ProxyFault> &allProxyFaults()
{
    static const std::vector<ProxyFault> faults = makeFaults();
    return faults;
}

ProxyFaults::ProxyFaults(std::uint64_t seed, double rate, const std::string &only)
    : m_random(seed), m_list(Api::methods(), kinds(), m_feed, seed)
{
    const Json initial{{"method", "*"}, {"kind", only.empty() ? any : only}, {"share", rate}};
    if (rate > 0)
        m_list.add(initial);
}

const ProxyFault *ProxyFaults::draw(const std::string &method, bool kept)
{
    const auto possible = [kept](const std::string &kind) { return kept || kind != keptOnly; };
    const auto hit = m_list.take(method, possible);
    if (!hit)
        return nullptr;
    std::vector<const ProxyFault *> faults;
    for (const ProxyFault &fault : allProxyFaults())
        if (hit->kind == fault.name || (hit->kind == any && possible(fault.name)))
            faults.push_back(&fault);
    const std::scoped_lock lock(m_mutex);
    return faults[std::uniform_int_distribution<std::size_t>(0, faults.size() - 1)(m_random)];
}

} // namespace sim
