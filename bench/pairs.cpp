// Runs the pairs of a comparison.
#include "pairs.h"

#include <algorithm>
#include <vector>

namespace bench {

namespace {

double quantile(std::vector<double> values, double part)
{
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

} // namespace

void Pairs::run(const Side &ours, const Side &beside)
{
    ours();
    beside();
    std::vector<double> ratios;
    std::vector<double> oursSeconds;
    std::vector<double> besideSeconds;
    bool oursFirst = false;
    for ([[maybe_unused]] auto _ : m_state) {
        // The order changes with each pair, so that no side is always the one that follows the other.
        oursFirst = !oursFirst;
        const double first = oursFirst ? ours() : beside();
        const double second = oursFirst ? beside() : ours();
        oursSeconds.push_back(oursFirst ? first : second);
        besideSeconds.push_back(oursFirst ? second : first);
        ratios.push_back(oursSeconds.back() / besideSeconds.back());
        m_state.SetIterationTime(first + second);
    }
    set(quantile(ratios, 0.5), quantile(ratios, 0.25), quantile(ratios, 0.75));
    m_state.counters["ours"] = quantile(oursSeconds, 0.5);
    m_state.counters["beside"] = quantile(besideSeconds, 0.5);
}

void Pairs::note(double value)
{
    for ([[maybe_unused]] auto _ : m_state)
        m_state.SetIterationTime(1);
    set(value, value, value);
}

void Pairs::set(double ratio, double low, double high)
{
    m_state.counters["ratio"] = ratio;
    m_state.counters["low"] = low;
    m_state.counters["high"] = high;
}

} // namespace bench
