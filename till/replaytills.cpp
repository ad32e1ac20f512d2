// Hands receipts out one at a time, so that a till that dies leaves at most one of them in doubt.
#include "replaytills.h"

#include "exitstatus.h"
#include "queuecommand.h"

#include <unistd.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace till {

void ReplayTills::run(const QList<QStringList> &arguments)
{
    m_time.start();
    for (const QStringList &list : arguments) {
        m_tills.push_back(std::make_unique<Till>());
        start(*m_tills.back(), list);
    }
    if (m_ended < m_tills.size()) // a process that cannot be forked ends within start()
        m_loop.exec();
    m_deliveryTime = std::chrono::milliseconds(m_time.elapsed()) - m_sellingTime;
    while (m_next < m_day.receipts.size())
        m_left.append(m_next++);
    std::sort(m_inDoubt.begin(), m_inDoubt.end());
    std::sort(m_left.begin(), m_left.end());
    showProgress(true);
}

void ReplayTills::start(Till &till, const QStringList &arguments)
{
    QProcess &process = till.process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&process, &QProcess::started, &m_loop, [this, &till] { handOut(till); });
    QObject::connect(&process, &QProcess::readyReadStandardOutput, &m_loop, [this, &till] { readReports(till); });
    QObject::connect(&process, &QProcess::finished, &m_loop, [this, &till] { end(till); });
    QObject::connect(&process, &QProcess::errorOccurred, &m_loop, [this, &till](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(till);
    });
    process.start(QCoreApplication::applicationFilePath(), arguments);
}

void ReplayTills::handOut(Till &till)
{
    till.receipt = m_next < m_day.receipts.size() ? m_next++ : -1;
    if (till.receipt >= 0)
        till.process.write(QByteArray::number(till.receipt) + '\n');
    else
        till.process.closeWriteChannel();
}

void ReplayTills::readReports(Till &till)
{
    while (till.process.canReadLine()) {
        const ReplayedReceipt replayed = ReplayedReceipt::fromJson(till.process.readLine());
        if (replayed.index != till.receipt || till.receipt < 0)
            continue;
        m_replayed.append(replayed);
        till.hasReported = true;
        m_linesSold += m_day.receipts.at(replayed.index).goods.size();
        m_sellingTime = std::chrono::milliseconds(m_time.elapsed());
        handOut(till);
        showProgress(false);
    }
}

void ReplayTills::end(Till &till)
{
    readReports(till);
    const bool isOrderly =
        till.process.error() != QProcess::FailedToStart && till.process.exitStatus() == QProcess::NormalExit;
    const bool hasBegun = till.hasReported || !isOrderly || till.process.exitCode() != Unusable;
    if (till.receipt >= 0)
        (hasBegun ? m_inDoubt : m_left).append(till.receipt);
    m_exitStatus = std::max(m_exitStatus, isOrderly ? till.process.exitCode() : static_cast<int>(Differed));
    if (++m_ended == m_tills.size())
        m_loop.quit();
}

void ReplayTills::showProgress(bool last)
{
    constexpr qint64 refreshInterval = 200;
    const qint64 elapsed = m_time.elapsed();
    if (!::isatty(STDERR_FILENO) || (!last && elapsed - m_shown < refreshInterval))
        return;
    m_shown = elapsed;
    const qsizetype lines = m_day.lines();
    const double seconds = static_cast<double>(elapsed) / 1000;
    const auto left = static_cast<int>(seconds * static_cast<double>(lines - m_linesSold) /
                                       static_cast<double>(std::max<qsizetype>(m_linesSold, 1)));
    const QString text = u"%1  %2 receipts/s  %3:%4 left "_s.arg(
        progressBar(static_cast<int>(m_day.receipts.size()),
                    static_cast<int>(m_day.receipts.size() - m_replayed.size())),
        QString::number(static_cast<double>(m_replayed.size()) / seconds, 'f', 1), QString::number(left / 60),
        QString::number(left % 60).rightJustified(2, u'0'));
    std::fprintf(stderr, "\r%s%s", qUtf8Printable(text), last ? "\n" : "");
}

} // namespace till
