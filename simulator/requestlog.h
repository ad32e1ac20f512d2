// Requests and their answers, for tests and people. Does not keep headers: they carry the credentials.
#pragma once

#include "feed.h"
#include "fields.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace sim {

/// How a request ended.
struct Outcome
{
    int status{};       ///< 0: the connection was closed without an answer
    std::string answer; ///< the body as sent
    std::string reason; ///< of a refusal, in English
    std::string fault;  ///< the fault that the request met with; empty without one
};

/// Thread-safe; counts every request and keeps the last ones.
class RequestLog
{
public:
    static constexpr std::size_t kept = 1000;
    static constexpr std::size_t keptBytes = 32 << 20; ///< of targets, bodies and answers together

    /// Touches `feed` with each change; it must outlive the object.
    explicit RequestLog(Feed &feed) : m_feed(feed) {}

    /// Adds a request to an API method; returns its number for answered().
    std::uint64_t received(const std::string &method, const std::string &target, const std::string &body);

    void answered(std::uint64_t number, Outcome outcome);

    /// {"counts": {method: n}, "requests": [{"number", "at", "method", "target", "body", "status", "milliseconds",
    /// "answer", "reason", "fault"}]}: oldest first; "milliseconds" is null while the request is running.
    Json toJson() const;

    /// The requests among the last `last` that were received or answered after change number `since`, as in toJson();
    /// moves `since` to the latest change.
    std::vector<Json> changes(std::uint64_t &since, std::size_t last) const;

private:
    struct Entry
    {
        std::uint64_t number{};
        std::uint64_t change{};
        std::chrono::system_clock::time_point at;
        std::chrono::steady_clock::time_point begin;
        std::chrono::steady_clock::duration duration{};
        bool isRunning = true;
        std::string method;
        std::string target;
        std::string body;
        Outcome outcome{};

        std::size_t bytes() const { return target.size() + body.size() + outcome.answer.size(); }
    };

    static Json toJson(const Entry &entry);
    void dropOldest();

    Feed &m_feed;
    mutable std::mutex m_mutex;
    std::uint64_t m_last{};
    std::uint64_t m_change{};
    std::size_t m_bytes{};
    std::map<std::string, std::uint64_t> m_counts;
    std::deque<Entry> m_entries; ///< numbers without gaps
};

} // namespace sim
