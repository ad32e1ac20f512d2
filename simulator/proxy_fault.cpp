// The list of faults, and the draw.
#include "proxy_fault.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace sim {

namespace {

std::vector<ProxyFault> makeFaults()
{
    using Answer = ProxyFault::Answer;
    std::vector<ProxyFault> faults{
        {"latency", true, Answer::Late},
        {"low bandwidth", true, Answer::Slow},
        {"slow drip", true, Answer::Dripping},
        {"answer cut", true, Answer::Cut},
        {"malformed JSON", true, Answer::Halved},
        {"connection refused", false, Answer::Refused},
        {"kept connection ends", true, Answer::Closed, true},
    };
    const auto add = [&faults](const ProxyFault &fault) {
        for (const bool processed : {false, true}) {
            faults.push_back(fault);
            faults.back().name += processed ? ", processed" : ", not processed";
            faults.back().processed = processed;
        }
    };
    add({"reset", false, Answer::Reset});
    add({"time-out", false, Answer::Nothing});
    add({"status 500 with a page", false, Answer::Replaced, false, 500, "text/html",
         "<html>Internal Server Error</html>"});
    add({"status 500 without a body", false, Answer::Replaced, false, 500, "text/plain", ""});
    for (const int status : {200, 400, 404, 500})
        add({"refusal with " + std::to_string(status), false, Answer::Replaced, false, status, "application/json",
             R"({"success": false, "message": "Forged refusal"})"});
    return faults;
}

} // namespace

const std::vector<ProxyFault> &allProxyFaults()
{
    static const std::vector<ProxyFault> faults = makeFaults();
    return faults;
}

ProxyFaults::ProxyFaults(std::uint64_t seed, double rate, const std::string &only) : m_random(seed), m_rate(rate)
{
    std::ranges::copy_if(allProxyFaults(), std::back_inserter(m_faults),
                         [&only](const ProxyFault &fault) { return only.empty() || fault.name == only; });
    if (m_faults.empty())
        throw std::runtime_error("there is no fault \"" + only + "\"");
}

const ProxyFault *ProxyFaults::draw(bool kept)
{
    const std::scoped_lock lock(m_mutex);
    if (!std::bernoulli_distribution(m_rate)(m_random))
        return nullptr;
    const ProxyFault &fault = m_faults[std::uniform_int_distribution<std::size_t>(0, m_faults.size() - 1)(m_random)];
    return kept || !fault.needsKept ? &fault : nullptr;
}

} // namespace sim
