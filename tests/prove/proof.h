// Runs the proof: sales under kills and faults, an orderly end, then the verdict.
#pragma once

#include "sales.h"
#include "shop.h"

#include <csignal>

namespace prove {

struct Options
{
    int sales = 300; ///< Checks to finish, at least.
    int kills = 200; ///< Processes to kill.
    quint64 seed = std::random_device()();
    double faultRate = 0.2;
};

class Proof
{
public:
    /// Set by a signal handler: no further sales are begun.
    static inline volatile std::sig_atomic_t stop = 0;

    /// Works in `folder`, which must be empty.
    Proof(const QString &folder, const Options &options);

    /// Prints what was counted, and returns what went wrong. Throws std::runtime_error for what the proof itself cannot
    /// do.
    QStringList run();

private:
    void sell();
    void startWork();
    [[nodiscard]] bool watchWork();
    void killWhenDue();
    int killed() const;
    void scheduleKill(int longestPause) { m_nextKill = QDeadlineTimer(number(0, longestPause)); }
    void sendRefusedAgain();
    void finish();
    void deliverAll();
    void judge();
    void judgeTraffic();
    QJsonArray undelivered() const;
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }

    Options m_options;
    Shop m_shop;
    Sales m_sales;
    std::mt19937_64 m_random;
    QDeadlineTimer m_nextKill;
    int m_sold = 0;      ///< When the current worker was started.
    int m_sentAgain = 0; ///< Requests that were set aside after a refusal.
    QStringList m_findings;
};

} // namespace prove
