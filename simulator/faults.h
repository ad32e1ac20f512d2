// Faults on demand: what a server does wrong, and to which requests. They can be listed, added and removed at run time.
#pragma once

#include "feed.h"
#include "fields.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace sim {

struct FaultKind
{
    std::string name;
    std::string does; ///< in one sentence, for people
};

struct Fault
{
    int id{};
    std::string method; ///< the API method; "*" for all
    std::string kind;
    std::optional<int> times; ///< requests still to be hit; if empty, the fault stays
    double share = 1;         ///< the share of requests that it hits, above 0, up to 1
    int hits{};
    int status = 500; ///< of kind "status", like the body
    std::string body;
    std::chrono::milliseconds delay{}; ///< of kind "delay"
};

/// Thread-safe.
class Faults
{
public:
    /// The known methods and kinds; touches `feed`, which must outlive the object, with each change. The same `seed`
    /// hits the same requests of the same sequence.
    Faults(std::vector<std::string> methods, std::vector<FaultKind> kinds, Feed &feed, std::uint64_t seed = 0);

    /// Adds {"method", "kind", "times" or "share"} and, for the kind "status", "status" and "body", for "delay"
    /// "milliseconds". Returns the id. Throws Refusal naming the field, with the known methods or kinds.
    int add(const Json &fault);

    /// False if there is no such fault.
    bool remove(int id);
    void clear();

    /// Takes one hit from the oldest fault that strikes a request to the method; empty if none does. Skips kinds that
    /// are not `possible`.
    std::optional<Fault> take(const std::string &method,
                              const std::function<bool(const std::string &kind)> &possible = nullptr);

    /// {"methods": [...], "kinds": [{"name", "does"}], "faults": [{"id", "method", "kind", "hits", ...}]}
    Json toJson() const;

    /// Waits out a delay; returns early after release().
    void wait(std::chrono::milliseconds delay);

    /// Ends all present and future waits, so that a stopping server can finish.
    void release();

private:
    Fault read(const Json &body) const;
    std::string readMethod(const Fields &fields) const;
    std::string readKind(const Fields &fields) const;
    bool hits(const Fault &fault);

    const std::vector<std::string> m_methods;
    const std::vector<FaultKind> m_kinds;
    Feed &m_feed;
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_stopping = false;
    std::mt19937_64 m_random;
    int m_lastId{};
    std::vector<Fault> m_faults;
};

} // namespace sim
