// The tills that replay a day: processes that run in parallel.
#pragma once

#include "replayworker.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QProcess>

#include <memory>
#include <vector>

namespace till {

/// Each receipt goes to the till that is free next. Where the standard error output is a terminal, it shows a bar with
/// rate and time left.
class ReplayTills
{
public:
    explicit ReplayTills(const Day &day) : m_day(day) {}

    /// Starts this program once for each entry of `arguments`, and returns when all of them have ended.
    void run(const QList<QStringList> &arguments);

    /// What was reported, in the order of the reports.
    const QList<ReplayedReceipt> &replayed() const { return m_replayed; }

    /// Indices of receipts that were given to a till that ended before it reported them.
    const QList<qsizetype> &inDoubt() const { return m_inDoubt; }

    /// Indices of receipts that no till has begun.
    const QList<qsizetype> &left() const { return m_left; }

    /// The highest exit status of a till; a crash counts as Differed.
    int exitStatus() const { return m_exitStatus; }

    /// From the start to the last report, and from there to the end of the last till.
    std::chrono::milliseconds sellingTime() const { return m_sellingTime; }
    std::chrono::milliseconds deliveryTime() const { return m_deliveryTime; }

private:
    struct Till
    {
        QProcess process;
        bool hasReported = false;
        qsizetype receipt = -1; ///< The one being sold; -1: none.
    };

    void start(Till &till, const QStringList &arguments);
    void handOut(Till &till);
    void readReports(Till &till);
    void end(Till &till);
    void showProgress(bool last);

    const Day &m_day;
    std::vector<std::unique_ptr<Till>> m_tills;
    QEventLoop m_loop;
    QElapsedTimer m_time;
    qint64 m_shown = 0;
    qsizetype m_next = 0;
    qsizetype m_linesSold = 0;
    std::size_t m_ended = 0;
    QList<ReplayedReceipt> m_replayed;
    QList<qsizetype> m_inDoubt;
    QList<qsizetype> m_left;
    int m_exitStatus = 0;
    std::chrono::milliseconds m_sellingTime{};
    std::chrono::milliseconds m_deliveryTime{};
};

} // namespace till
