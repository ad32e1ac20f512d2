// The faults on the line between a till and its service, and when they strike.
#pragma once

#include "faults.h"

#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace sim {

struct ProxyFault
{
    /// What the till gets instead of a good answer at once.
    enum class Answer {
        Late,     ///< A good one, after the request was held up on its way.
        Slow,     ///< All of the answer, at a low bandwidth.
        Dripping, ///< The answer byte by byte, longer than a till waits.
        Nothing,  ///< None; the connection stays.
        Cut,      ///< Half of it, then the end of the connection.
        Bare,     ///< Its headers without a length, then the end of the connection.
        Halved,   ///< Half of the JSON, as a complete answer.
        Reset,    ///< The connection is reset.
        Closed,   ///< The connection ends.
        Refused,  ///< All connections end, and new ones are refused for a while.
        Replaced, ///< `body` with `status`, which the service has never said.
    };

    std::string name;
    bool processed = false; ///< The service gets the request.
    Answer answer = Answer::Late;
    int status{};
    std::string type = {};
    std::string body = {};
};

/// Every kind of fault. Where a till cannot tell whether the service has processed its request, there is one for each
/// case.
const std::vector<ProxyFault> &allProxyFaults();

/// Draws faults from a list. May be used from any thread.
class ProxyFaults
{
public:
    /// Starts with faults in a share of `rate` of all exchanges, 0 to 1, of the kind `only`, or of any kind if that is
    /// empty. Throws Refusal for an unknown kind.
    ProxyFaults(std::uint64_t seed, double rate, const std::string &only);

    /// A fault for the next exchange, null for none. `kept`: its connection has carried requests before.
    const ProxyFault *draw(const std::string &method, bool kept);

    /// To list, add and remove faults while the proxy runs.
    Faults &list() { return m_list; }

private:
    std::mutex m_mutex;
    std::mt19937_64 m_random;
    Feed m_feed;
    Faults m_list;
};

} // namespace sim
