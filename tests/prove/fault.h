// What can go wrong between a till and its service, and when it does.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace prove {

struct Fault
{
    /// What the till gets instead of a good answer at once.
    enum class Answer {
        Late,        ///< The request is held up on its way; then all is well.
        Slow,        ///< All of the answer, at a low bandwidth.
        Dripping,    ///< The answer byte by byte, for longer than the till waits.
        Nothing,     ///< None; the connection stays.
        Cut,         ///< Half of it, then the end of the connection.
        Halved,      ///< Half of the JSON, as a complete answer.
        Reset,       ///< The connection is reset.
        Closed,      ///< The connection ends.
        Refused,     ///< The same, and new ones are refused for a while.
        GatewayPage, ///< A page of some gateway with `status`.
        Empty,       ///< `status` without a body.
        Refusal,     ///< "success": false with `status`: a refusal that the service has never spoken.
    };

    std::string name;
    bool processed = false; ///< The service gets the request.
    Answer answer = Answer::Late;
    int status = 0;
    bool keptConnection = false; ///< Only where the connection has carried an exchange before.
};

/// Every kind of fault.
const std::vector<Fault> &allFaults();

/// Draws faults. May be used from any thread.
class FaultSource
{
public:
    /// `rate`: the part of all exchanges that meet with a fault, 0 to 1. `only`: the name of the one kind that there
    /// is; empty for all kinds. Throws std::runtime_error for an unknown name.
    FaultSource(std::uint64_t seed, double rate, const std::string &only);

    /// A fault for the next exchange, null for none. `kept`: the connection has carried one before.
    const Fault *draw(bool kept);

    /// A time between two bounds.
    std::chrono::milliseconds time(std::chrono::milliseconds least, std::chrono::milliseconds most);

private:
    std::mutex m_mutex;
    std::vector<Fault> m_faults;
    std::mt19937_64 m_random;
    double m_rate;
};

} // namespace prove
