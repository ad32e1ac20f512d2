// Keeps the latest requests.
#include "requestlog.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace sim {

namespace {

/// UTC, in the form of the ledger's times.
std::string timeText(std::chrono::system_clock::time_point at)
{
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(at.time_since_epoch()).count();
    const std::time_t seconds = milliseconds / 1000;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%03d", static_cast<int>(milliseconds % 1000));
    return text.data();
}

} // namespace

std::uint64_t RequestLog::received(const std::string &method, const std::string &target, const std::string &body)
{
    const std::scoped_lock lock(m_mutex);
    ++m_counts[method];
    m_entries.push_back({.number = ++m_last,
                         .change = ++m_change,
                         .at = std::chrono::system_clock::now(),
                         .begin = std::chrono::steady_clock::now(),
                         .method = method,
                         .target = target,
                         .body = body});
    m_bytes += m_entries.back().bytes();
    dropOldest();
    m_feed.touch();
    return m_last;
}

void RequestLog::answered(std::uint64_t number, Outcome outcome)
{
    const std::scoped_lock lock(m_mutex);
    if (m_entries.empty() || number < m_entries.front().number)
        return; // dropped meanwhile
    Entry &entry = m_entries[number - m_entries.front().number];
    entry.change = ++m_change;
    entry.duration = std::chrono::steady_clock::now() - entry.begin;
    entry.isRunning = false;
    entry.outcome = std::move(outcome);
    m_bytes += entry.outcome.answer.size();
    dropOldest();
    m_feed.touch();
}

void RequestLog::dropOldest()
{
    while (m_entries.size() > 1 && (m_entries.size() > kept || m_bytes > keptBytes)) {
        m_bytes -= m_entries.front().bytes();
        m_entries.pop_front();
    }
}

Json RequestLog::toJson(const Entry &entry)
{
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(entry.duration).count();
    return {{"number", entry.number},
            {"at", timeText(entry.at)},
            {"method", entry.method},
            {"target", entry.target},
            {"body", entry.body},
            {"status", entry.outcome.status},
            {"milliseconds", entry.isRunning ? Json() : Json(static_cast<double>(microseconds) / 1000)},
            {"answer", entry.outcome.answer},
            {"reason", entry.outcome.reason},
            {"fault", entry.outcome.fault}};
}

Json RequestLog::toJson() const
{
    const std::scoped_lock lock(m_mutex);
    Json requests = Json::array();
    for (const Entry &entry : m_entries)
        requests.push_back(toJson(entry));
    return {{"counts", m_counts}, {"requests", requests}};
}

std::vector<Json> RequestLog::changes(std::uint64_t &since, std::size_t last) const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<Json> changed;
    for (const Entry &entry : m_entries)
        if (entry.change > since && entry.number + last > m_last)
            changed.push_back(toJson(entry));
    since = m_change;
    return changed;
}

} // namespace sim
