// The course of the proof: sales, kills and faults, then an end in order, then the judgement.
#pragma once

#include "books.h"
#include "sales.h"
#include "shop.h"
#include "traffic.h"

namespace prove {

struct Options
{
    int sales = 0; ///< At least so many checks are finished, and
    int kills = 0; ///< so many processes are killed.
    quint64 seed = 0;
    double faultRate = 0;
    std::string postgres; ///< Where the server's socket is that keeps the queue; empty: a file does.
};

/// Every figure is counted.
struct Result
{
    Books books;
    Traffic traffic;
    Figures kills;        ///< By what was killed.
    int sentAgain = 0;    ///< Requests that were set aside after a refusal and sent again by a person.
    int leftInQueue = 0;  ///< Requests that are still not delivered.
    int cardsRemoved = 0; ///< By cashiers, after a failure.
    QStringList findings; ///< What else went wrong: crashes, a till that does not come to an end, what is left.

    bool isGood() const { return books.isGood() && findings.isEmpty() && total(traffic.repeats) > 0; }
};

class Proof
{
public:
    /// Works in `folder`, which must be empty.
    Proof(const QString &folder, const Options &options);

    /// Throws std::runtime_error for what the proof itself cannot do.
    Result run();

private:
    void sell();
    void sell(const QJsonObject &shift);
    void startWork();
    [[nodiscard]] bool watchWork();
    void killWhenDue();
    void scheduleKill(int longestPause);
    void sendRefusedAgain();
    void finish();
    [[nodiscard]] bool deliverAll();
    void sellUndisturbed();
    void judge();
    void judgeRestored(const QJsonObject &check);
    QList<QJsonObject> undelivered() const;
    int number(int least, int most);
    int killed() const;

    Options m_options;
    Shop m_shop;
    Sales m_sales;
    std::mt19937_64 m_random;
    QDeadlineTimer m_nextKill;
    QHash<QString, QJsonArray> m_restored; ///< By check: its goods when a till last found it open.
    Result m_result;
};

} // namespace prove
