// The back-off of the queue's drain.
#include "backoff.h"

#include <QtCore/QRandomGenerator>

#include <algorithm>

BackOff::BackOff(std::function<double()> random) : m_random(std::move(random))
{
    if (!m_random)
        m_random = [] { return QRandomGenerator::global()->generateDouble(); };
}

std::chrono::milliseconds BackOff::delay(int failures) const
{
    constexpr int doublingsToLongest = 7;
    const auto bound = std::min(base * (1 << std::clamp(failures - 1, 0, doublingsToLongest)), longest);
    return std::chrono::milliseconds(static_cast<qint64>(static_cast<double>(bound.count()) * m_random()));
}
