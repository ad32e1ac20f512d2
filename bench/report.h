// What was measured, as a table and as lines for programs.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace bench {

/// The mode whose ratios are judged: all threads, also those of the service, on one processor. It is the harder one,
/// since the wire costs least there, and the steadier one.
inline constexpr auto judgedMode = "pinned";

/// Takes the results from Google Benchmark: runs named "comparison/mode" with the counters of Pairs, and "limit",
/// which is 0 where there is none.
class Report : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;

    void printTable() const;

    /// Prints one line "ratio NAME VALUE LIMIT ok|over" per comparison that has a limit. False: a limit is exceeded, or
    /// a comparison has failed.
    bool printRatios() const;

private:
    using Counters = std::map<std::string, double>;

    const Counters &judged(const std::string &name) const;

    std::map<std::string, std::map<std::string, Counters>> m_results; // by comparison and mode
    std::vector<std::string> m_order;
    bool m_failed = false;
};

} // namespace bench
