// Runs the pairs of a comparison.
#include "pairs.h"

#include <algorithm>
#include <vector>

namespace bench {

namespace {

struct Pair
{
    double ours;
    double beside;
};

template <class Value>
double quantile(const std::vector<Pair> &pairs, double part, const Value &value)
{
    std::vector<double> values(pairs.size());
    std::transform(pairs.begin(), pairs.end(), values.begin(), value);
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

// Drops the slower half of the pairs, as disturbed: a side that takes longer is interrupted more often, and its ratio
// would grow with the load of the machine.
void keepUndisturbed(std::vector<Pair> &pairs)
{
    std::sort(pairs.begin(), pairs.end(),
              [](const Pair &a, const Pair &b) { return a.ours + a.beside < b.ours + b.beside; });
    pairs.resize((pairs.size() + 1) / 2);
}

} // namespace

void Pairs::run(const Side &ours, const Side &beside)
{
    ours();
    beside();
    std::vector<Pair> pairs;
    bool oursFirst = false;
    for ([[maybe_unused]] auto _ : m_state) {
        // The order changes with each pair, so that no side is always the one that follows the other.
        oursFirst = !oursFirst;
        const double first = oursFirst ? ours() : beside();
        const double second = oursFirst ? beside() : ours();
        pairs.push_back(oursFirst ? Pair{first, second} : Pair{second, first});
        m_state.SetIterationTime(first + second);
    }
    const auto oursOf = [](const Pair &pair) { return pair.ours; };
    const auto besideOf = [](const Pair &pair) { return pair.beside; };
    const double judged = quantile(pairs, 0.25, oursOf) / quantile(pairs, 0.25, besideOf);
    keepUndisturbed(pairs);
    const auto ratio = [](const Pair &pair) { return pair.ours / pair.beside; };
    set(judged, quantile(pairs, 0.25, ratio), quantile(pairs, 0.75, ratio));
    m_state.counters["ours"] = quantile(pairs, 0.5, oursOf);
    m_state.counters["beside"] = quantile(pairs, 0.5, besideOf);
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
