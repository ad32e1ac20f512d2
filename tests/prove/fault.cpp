// The list of faults. Where the till cannot see whether the service has processed a request, both are in it.
#include "fault.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace prove {

namespace {

std::vector<Fault> makeFaults()
{
    using Answer = Fault::Answer;
    std::vector<Fault> faults{
        {"latency", true, Answer::Late},
        {"low bandwidth", true, Answer::Slow},
        {"slow drip", true, Answer::Dripping},
        {"answer cut", true, Answer::Cut},
        {"malformed JSON", true, Answer::Halved},
        {"connection refused", false, Answer::Refused},
        {"kept connection ends", true, Answer::Closed, 0, true},
    };
    const auto add = [&faults](const std::string &name, Answer answer, int status = 0) {
        faults.push_back({name + ", not processed", false, answer, status});
        faults.push_back({name + ", processed", true, answer, status});
    };
    add("reset", Answer::Reset);
    add("time-out", Answer::Nothing);
    add("status 500 with a page", Answer::GatewayPage, 500);
    add("status 500 without a body", Answer::Empty, 500);
    for (const int status : {200, 400, 404, 500})
        add("refusal with " + std::to_string(status), Answer::Refusal, status);
    return faults;
}

} // namespace

const std::vector<Fault> &allFaults()
{
    static const std::vector<Fault> faults = makeFaults();
    return faults;
}

FaultSource::FaultSource(std::uint64_t seed, double rate, const std::string &only) : m_random(seed), m_rate(rate)
{
    std::ranges::copy_if(allFaults(), std::back_inserter(m_faults),
                         [&only](const Fault &fault) { return only.empty() || fault.name == only; });
    if (m_faults.empty())
        throw std::runtime_error("there is no fault \"" + only + "\"");
}

const Fault *FaultSource::draw(bool kept)
{
    const std::scoped_lock lock(m_mutex);
    if (!std::bernoulli_distribution(m_rate)(m_random))
        return nullptr;
    const Fault &fault = m_faults[std::uniform_int_distribution<std::size_t>(0, m_faults.size() - 1)(m_random)];
    return kept || !fault.keptConnection ? &fault : nullptr;
}

std::chrono::milliseconds FaultSource::time(std::chrono::milliseconds least, std::chrono::milliseconds most)
{
    const std::scoped_lock lock(m_mutex);
    return std::chrono::milliseconds(
        std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(m_random));
}

} // namespace prove
