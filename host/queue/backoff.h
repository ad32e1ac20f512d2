// How long to wait before something that has failed is tried again.
#pragma once

#include <poshost_export.h>

#include <chrono>
#include <functional>

/// Exponential back-off with full jitter: a random time between nothing and a bound that doubles with each failure, so
/// that tills which lost the service at the same moment do not come back at the same moment.
class POSHOST_EXPORT BackOff
{
public:
    static constexpr std::chrono::milliseconds base{500};
    static constexpr std::chrono::milliseconds longest{60'000};

    /// `random` gives numbers from 0 up to, not including, 1; without it they come from Qt's generator.
    explicit BackOff(std::function<double()> random = {});

    /// The wait after the `failures`th failure in a row, counted from 1.
    std::chrono::milliseconds delay(int failures) const;

private:
    std::function<double()> m_random;
};
