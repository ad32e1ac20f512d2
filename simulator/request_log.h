// What came over the wire, for tests that compare it. Headers are not kept: they carry the credentials.
#pragma once

#include "fields.h"

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>

namespace sim {

/// Thread-safe; counts every request and keeps the last ones.
class RequestLog
{
public:
    static constexpr std::size_t kept = 1000;

    /// Notes a request to an API method; its number for answered().
    std::uint64_t received(const std::string &method, const std::string &target, const std::string &body);

    /// Notes the status it was answered with.
    void answered(std::uint64_t number, int status);

    /// {"counts": {method: n}, "requests": [{"number", "method", "target", "body", "status"}]}: oldest first, target
    /// and body as received, status 0 while or when it was not answered.
    Json toJson() const;

private:
    struct Entry
    {
        std::uint64_t number;
        std::string method;
        std::string target;
        std::string body;
        int status;
    };

    mutable std::mutex m_mutex;
    std::uint64_t m_last = 0;
    std::map<std::string, std::uint64_t> m_counts;
    std::deque<Entry> m_entries;
};

} // namespace sim
