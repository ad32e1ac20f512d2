// The table shows both modes; only one is judged.
#include "report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>

namespace bench {

bool Report::ReportContext(const Context &)
{
    return true;
}

void Report::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const std::string label = run.run_name.function_name;
        m_failed = m_failed || run.error_occurred;
        std::cerr << label << ' ' << run.error_message << std::endl;
        const std::string name = label.substr(0, label.find('/'));
        const bool isPointOfCurve = name.find(':') != std::string::npos;
        if (run.error_occurred || isPointOfCurve)
            continue;
        if (!m_results.contains(name))
            m_order.push_back(name);
        Counters &counters = m_results[name][label.substr(label.find('/') + 1)];
        for (const auto &[key, counter] : run.counters)
            counters[key] = counter.value;
    }
}

void Report::printTable() const
{
    std::printf("\nTime of our side as a multiple of the other side's: ratio of the lower quartiles (quartiles of "
                "neighbours' ratios).\n"
                "Pinned: all threads on one processor; free: where the system puts them.\n"
                "Judged, where there is a limit: %s.\n\n%-24s %6s  %-22s %-22s\n",
                judgedMode, "comparison", "limit", "pinned", "free");
    for (const std::string &name : m_order) {
        const double limit = judged(name).at("limit");
        std::printf(limit > 0 ? "%-24s %6.2f" : "%-24s       ", name.c_str(), limit);
        for (const char *mode : {"pinned", "free"}) {
            const auto found = m_results.at(name).find(mode);
            if (found == m_results.at(name).end())
                std::printf("  %-22s", "");
            else
                std::printf("  %.3f (%.3f - %.3f)", found->second.at("ratio"), found->second.at("low"),
                            found->second.at("high"));
        }
        std::printf("\n");
    }
    std::printf("\n");
}

bool Report::printRatios() const
{
    bool good = !m_failed && !m_order.empty();
    for (const std::string &name : m_order) {
        const double ratio = judged(name).at("ratio");
        const double limit = judged(name).at("limit");
        if (limit <= 0)
            continue;
        std::printf("ratio %s %.3f %.2f %s\n", name.c_str(), ratio, limit, ratio > limit ? "over" : "ok");
        good = good && ratio <= limit;
    }
    return good;
}

const Report::Counters &Report::judged(const std::string &name) const
{
    const auto &modes = m_results.at(name);
    const auto found = modes.find(judgedMode);
    return found == modes.end() ? modes.begin()->second : found->second;
}

} // namespace bench
