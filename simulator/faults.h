// Faults on demand: what the service is told to do wrong with the next requests.
#pragma once

#include "fields.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace sim {

struct Fault
{
    enum class Kind {
        Status,      ///< answer `status` and `body`, without processing
        Close,       ///< process, then close the connection without an answer
        CloseBefore, ///< close the connection without processing
        Delay,       ///< wait `delay`, then process and answer
        Malformed    ///< process, then answer broken JSON
    };

    std::string method; ///< the API method, "*" for every one
    Kind kind = Kind::Status;
    int times = 1; ///< requests still to be hit
    int status = 500;
    std::string body;
    std::chrono::milliseconds delay{};
};

/// Reads {"method", "kind", "times", "status", "body", "milliseconds"}; the last four are optional.
/// Throws Refusal naming the field.
Fault readFault(const Json &body);

/// Thread-safe.
class Faults
{
public:
    void add(const Fault &fault);
    void clear();

    /// The oldest fault for the method, used up by one; nothing when there is none.
    std::optional<Fault> take(const std::string &method);

    /// Waits out a delay; returns early after release().
    void wait(std::chrono::milliseconds delay);

    /// Ends all present and future waits, so that a stopping server can finish.
    void release();

private:
    std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_stopping = false;
    std::vector<Fault> m_faults;
};

} // namespace sim
