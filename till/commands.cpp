// Commands for what sales leave behind: the queue, the journal, an open check.
#include "commands.h"

#include "checkview.h"
#include "console.h"
#include "endingqueue.h"
#include "journal.h"
#include "queuesender.h"
#include "statustext.h"
#include "tillhost.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <core/plaintext.h>

#include <unistd.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr qsizetype longestError = 2000; // characters of a line

/// Waits for the drain, showing how far it is where somebody watches.
bool waitWithProgress(QueueDrain &drain, std::chrono::seconds time)
{
    constexpr std::chrono::milliseconds refreshInterval{200};
    const QDeadlineTimer deadline(time);
    const auto status = queueStatus();
    const int total = status ? status->waiting : 0;
    bool delivered = false;
    do {
        delivered =
            drain.waitUntilDrained(std::min(refreshInterval, std::chrono::milliseconds(deadline.remainingTime())));
        if (const auto now = queueStatus())
            std::fprintf(stderr, "\r%s", qUtf8Printable(progressBar(total, now->waiting)));
    } while (!delivered && !deadline.hasExpired());
    if (total > 0)
        std::fputc('\n', stderr);
    return delivered;
}

/// Whether the requests of all checks that were closed are on the queue; says on stderr when not, or not known.
bool reportUnqueued(const TillHost &host)
{
    try {
        const auto checks = CheckStore(host.dataFolder(), CheckStore::Access::Look).checks();
        const auto count = std::ranges::count(checks, CheckStore::Standing::Ending, &CheckStore::KeptCheck::standing);
        if (count > 0)
            std::fprintf(stderr, "%s\n",
                         qUtf8Printable(u"Чеков, запросы которых ещё не в очереди: %1. Запустите кассу"_s.arg(count)));
        return count == 0;
    } catch (const BasicException &error) {
        std::ignore = fail(error, Differed);
        return false;
    }
}

} // namespace

ExitStatus fail(const BasicException &error, ExitStatus status)
{
    QStringList lines;
    for (const QString &line : error.text().ru().split(u'\n'))
        lines.append(plainText(line, longestError));
    std::fprintf(stderr, "kvo-till: %s\n", qUtf8Printable(lines.join(u"\n  "_s)));
    return status;
}

bool deliver(QueueDrain &drain, std::chrono::seconds time, EndingQueue &queue)
{
    const auto warn = [](const QString &problem) {
        if (!problem.isEmpty())
            std::fprintf(stderr, "%s\n",
                         qUtf8Printable(u"Очередь не работает: "_s + plainText(problem, longestReason)));
    };
    if (const QString problem = queue.findProblem(); !problem.isEmpty()) {
        warn(problem);
        return false;
    }
    drain.wakeUp();
    const bool delivered = ::isatty(STDERR_FILENO) ? waitWithProgress(drain, time) : drain.waitUntilDrained(time);
    warn(drain.problem());
    return delivered;
}

ExitStatus drainQueue(const Options &options)
{
    // Beside a till: each drain has leases of its own.
    const TillHost host(options.configFile, TillHost::Access::Look);
    QueueDrain drain;
    drain.setHandler(loyaltyQueueOwner, makeLoyaltySender());
    drain.start();
    const bool delivered = deliver(drain, options.drainTime, host.queue());
    const QueueStatus left = host.queue().status();
    const QJsonObject json = statusAsJson(left, QDateTime::currentDateTime());
    const bool works = host.queue().knownProblem().isEmpty() && drain.problem().isEmpty();
    if (options.queueRequest.json)
        console::printLine(QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)));
    else if (works || left.waiting + left.blocked > 0)
        console::printLine(statusText(left));
    const bool areQueued = reportUnqueued(host);
    return works && areQueued && (delivered || left.waiting == 0) && left.blocked == 0 ? Succeeded : Differed;
}

ExitStatus printJournal(const Options &options)
{
    const QDateTime since = QDateTime::fromString(options.journalSince, Qt::ISODate);
    if (!options.journalSince.isEmpty() && !since.isValid())
        throw BasicException(
            u"--since %1: a date such as 2026-03-31 or 2026-03-31T18:00 is expected"_s.arg(options.journalSince));
    const TillHost host(options.configFile, TillHost::Access::Look);
    CheckStore store(host.dataFolder(), CheckStore::Access::Look);
    console::print(journalText(store.journal(since), options.json));
    return Succeeded;
}

ExitStatus showStatus(const Options &options)
{
    TillHost host(options.configFile, TillHost::Access::Look);
    CheckStore store(host.dataFolder(), CheckStore::Access::Look);
    console::print(tillStatusText(host, store, options.configFile));
    return Succeeded;
}

ExitStatus manageQueue(const Options &options)
{
    const TillHost host(options.configFile, TillHost::Access::Look);
    const QueueAnswer answer = answerTo(options.queueRequest, QDateTime::currentDateTime());
    console::print(answer.text);
    return answer.isFine ? Succeeded : Differed;
}

} // namespace till
