// kvo-bench: runs the comparisons, both sides in turn, once pinned to a processor and once free.
#include "comparisons.h"
#include "report.h"

#include <core/config.h>
#include <core/logsetup.h>

#include <CLI/CLI.hpp>
#include <malloc.h>
#include <sched.h>

#include <QtCore/QCoreApplication>

#include <iostream>

namespace bench {

namespace {

struct Comparison
{
    std::string name;
    double limit; ///< 0: to explain the others, or a point of a curve; run in the judged mode only.
    int pairs;
    std::function<void(Pairs &)> run;
};

std::vector<Comparison> comparisons()
{
    std::vector<Comparison> all = {
        {"exchange_vs_curl", 1.35, 2000, exchangeVsCurl},
        {"exchange_vs_qnam", 0.45, 300, exchangeVsQnam},
        {"sale_vs_curl_20", 1.85, 2000, [](Pairs &pairs) { saleVsCurl(pairs, 20); }},
        {"sale_vs_floor_1000", 2.0, 100, [](Pairs &pairs) { saleVsFloor(pairs, 1000); }},
        {"body_vs_qjson", 1.25, 1000, [](Pairs &pairs) { bodyVsQJson(pairs, 100); }},
        {"body_vs_nlohmann", 2.3, 1000, [](Pairs &pairs) { bodyVsNlohmann(pairs, 100); }},
        {"body_growth", 1.15, 200, bodyGrowth},
        {"unchanged_vs_body", 2.5, 1000, unchangedVsBody},
        {"push_vs_sqlite", 1.35, 500, pushVsSqlite},
        {"drain_vs_curl", 2.5, 15, drainVsCurl},
        {"queue_status_growth", 2.0, 300, queueStatusGrowth},
        {"queue_push_growth", 2.0, 300, queuePushGrowth},
        {"queue_due_growth", 2.0, 300, queueDueGrowth},
        {"queue_probe_growth", 2.0, 300, queueProbeGrowth},
        {"save_vs_sqlite", 1.5, 300, saveVsSqlite},
        {"save_growth", 1.5, 200, saveGrowth},
        {"sale_on_disk_vs_plain_qt", 0.5, 60, saleOnDiskVsPlainQt},
        {"load_vs_empty_plugin", 1.35, 150, loadVsEmptyPlugin},
        {"floor_vs_curl_20", 0, 500, [](Pairs &pairs) { floorVsCurl(pairs, 20); }},
        {"replay_vs_curl", 0, 15, replayVsCurl},
    };
    for (const int lines : {1, 10, 100, 1000, 10'000}) {
        const std::string at = ":" + std::to_string(lines);
        const int pairs = 20 + 2000 / lines;
        all.push_back({"body_vs_qjson" + at, 0, pairs, [=](Pairs &p) { bodyVsQJson(p, lines); }});
        all.push_back({"body_vs_nlohmann" + at, 0, pairs, [=](Pairs &p) { bodyVsNlohmann(p, lines); }});
    }
    for (const int lines : {1, 10, 30, 100, 300, 1000}) {
        const std::string at = ":" + std::to_string(lines);
        all.push_back({"sale_vs_curl" + at, 0, 60, [=](Pairs &p) { saleVsCurl(p, lines); }});
        all.push_back({"sale_vs_floor" + at, 0, 60, [=](Pairs &p) { saleVsFloor(p, lines); }});
    }
    return all;
}

/// Keeps this thread, and the threads that it starts, on the last of its processors.
class Pinned
{
public:
    Pinned()
    {
        ::sched_getaffinity(0, sizeof m_before, &m_before);
        std::size_t last = CPU_SETSIZE - 1;
        while (!CPU_ISSET(last, &m_before))
            --last;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(last, &one);
        require(::sched_setaffinity(0, sizeof one, &one) == 0, "the thread cannot be pinned");
    }
    ~Pinned() { ::sched_setaffinity(0, sizeof m_before, &m_before); }
    Q_DISABLE_COPY_MOVE(Pinned)

private:
    cpu_set_t m_before;
};

void add(const Comparison &comparison, const std::string &mode)
{
    const auto run = [comparison, mode](benchmark::State &state) {
        std::optional<Pinned> pinned;
        if (mode == "pinned")
            pinned.emplace();
        try {
            Pairs pairs(state);
            comparison.run(pairs);
        } catch (const std::exception &error) {
            state.SkipWithError(error.what());
        }
        state.counters["limit"] = comparison.limit;
    };
    benchmark::RegisterBenchmark((comparison.name + '/' + mode).c_str(), run)
        ->Iterations(comparison.pairs)
        ->UseManualTime();
}

int runAll(const QString &service)
{
    for (const Comparison &comparison : comparisons()) {
        add(comparison, judgedMode);
        if (comparison.limit > 0)
            add(comparison, "free");
    }
    if (!service.isEmpty()) {
        add({"stall_ms_over_twin", 20, 1, [=](Pairs &pairs) { pairs.note(stall(service)); }}, "free");
        add({"syncs_per_sale", 36, 1, [=](Pairs &pairs) { pairs.note(syncsPerSale(service)); }}, "free");
        add({"till_peak_memory", 1.02, 1, [=](Pairs &pairs) { pairs.note(tillMemory(service)); }}, "free");
    }
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    report.printTable();
    return report.printRatios() ? 0 : 1;
}

} // namespace

} // namespace bench

int main(int argc, char *argv[])
{
    // What is measured is the code, and not when the C library gives memory back to the system and takes it again: with
    // bodies of megabytes it would do so in every repetition.
    constexpr int gigabyte = 1 << 30;
    ::mallopt(M_MMAP_THRESHOLD, gigabyte);
    ::mallopt(M_TRIM_THRESHOLD, gigabyte);
    const QCoreApplication application(argc, argv);
    setUpLogging(Config());
    benchmark::Initialize(&argc, argv);
    std::string loadSide;
    std::string service;
    CLI::App program("Compares the plugin with what one would use instead. Exit status: 0 all within their limits,\n"
                     "1 a limit is exceeded, 2 not usable. Google Benchmark's options select comparisons and write\n"
                     "JSON: --benchmark_filter=REGEX, --benchmark_out=FILE.",
                     "kvo-bench");
    program.add_option("--service", service, "URL of a loyalty-sim, for stalls and for kvo-till's syncs and memory");
    program.add_option("--load-once", loadSide, "For kvo-bench itself")->group("");
    CLI11_PARSE(program, argc, argv);
    try {
        if (loadSide.empty())
            return bench::runAll(QString::fromStdString(service));
        bench::loadOnce(loadSide);
        return 0;
    } catch (const std::exception &error) {
        std::cerr << "kvo-bench: " << error.what() << '\n';
        return 2;
    }
}
