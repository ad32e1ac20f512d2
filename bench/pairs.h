// How two sides are compared: short repetitions in turn, and the lower quartile of one side's times over that of the
// other. Disturbances only make times longer, so the quicker repetitions of both sides are the comparable ones.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace bench {

/// Does its work once or more, and returns the seconds that one call took.
using Side = std::function<double()>;

/// The seconds that `work` takes.
template <class Work>
double secondsOf(const Work &work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// A side that makes `count` calls per repetition.
template <class Work>
Side calls(int count, const Work &work)
{
    const auto all = [count, work] {
        for (int i = 0; i < count; ++i)
            work();
    };
    return [count, all] { return secondsOf(all) / count; };
}

/// One comparison at work.
class Pairs
{
public:
    explicit Pairs(benchmark::State &state) : m_state(state) {}

    /// Runs the sides in turn, as often as the benchmark has iterations, after one round that does not count. Leaves
    /// the counters "ratio" (of the lower quartiles, ours / beside), "low" and "high" (the quartiles of the ratios of
    /// neighbours), "ours" and "beside" (medians, seconds per call), these four of the faster half of the pairs.
    void run(const Side &ours, const Side &beside);

    /// For a figure that is no ratio of two times: all three counters are `value`.
    void note(double value);

private:
    void set(double ratio, double low, double high);

    benchmark::State &m_state;
};

/// Throws std::runtime_error where a comparison would compare the wrong things.
inline void require(bool fact, const char *message)
{
    if (!fact)
        throw std::runtime_error(message);
}

} // namespace bench
