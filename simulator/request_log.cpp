// Ring of received requests.
#include "request_log.h"

namespace sim {

std::uint64_t RequestLog::received(const std::string &method, const std::string &target, const std::string &body)
{
    const std::scoped_lock lock(m_mutex);
    ++m_counts[method];
    m_entries.push_back({++m_last, method, target, body, 0});
    if (m_entries.size() > kept)
        m_entries.pop_front();
    return m_last;
}

void RequestLog::answered(std::uint64_t number, int status)
{
    const std::scoped_lock lock(m_mutex);
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (entry->number == number)
            entry->status = status;
}

Json RequestLog::toJson() const
{
    const std::scoped_lock lock(m_mutex);
    Json requests = Json::array();
    for (const Entry &entry : m_entries)
        requests.push_back({{"number", entry.number},
                            {"method", entry.method},
                            {"target", entry.target},
                            {"body", entry.body},
                            {"status", entry.status}});
    return {{"counts", m_counts}, {"requests", requests}};
}

} // namespace sim
