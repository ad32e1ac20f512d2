// The commands of kvo-till. Whatever is wrong with what the program was given comes out before anything is sold.
#include "commands.h"

#include "console.h"
#include "journal.h"
#include "loyaltyplugin.h"
#include "queuesender.h"
#include "scenarioplayer.h"
#include "scenarioreader.h"
#include "scriptedcashier.h"
#include "tillhost.h"

#include <core/basicexception.h>
#include <core/singleton.h>

#include <unistd.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

ExitStatus fail(const BasicException &error, ExitStatus status)
{
    std::fprintf(stderr, "kvo-till: %s\n", error.what());
    return status;
}

/// Waits for the drain, showing how far it is where somebody watches.
bool waitWithProgress(QueueDrain &drain, std::chrono::seconds time, const EndingQueue &queue)
{
    constexpr std::chrono::milliseconds timeBetweenPictures{200};
    const QDeadlineTimer deadline(time);
    const int total = queue.status().waiting;
    bool delivered = false;
    do {
        delivered =
            drain.waitUntilDrained(std::min(timeBetweenPictures, std::chrono::milliseconds(deadline.remainingTime())));
        std::fprintf(stderr, "\r%s", qUtf8Printable(progressBar(total, queue.status().waiting)));
    } while (!delivered && !deadline.hasExpired());
    if (total > 0)
        std::fputc('\n', stderr);
    return delivered;
}

bool deliver(QueueDrain &drain, std::chrono::seconds time, const EndingQueue &queue)
{
    drain.wakeUp();
    return ::isatty(STDERR_FILENO) ? waitWithProgress(drain, time, queue) : drain.waitUntilDrained(time);
}

const ScenarioCheck *firstCheck(const QList<Scenario> &scenarios)
{
    for (const Scenario &scenario : scenarios) {
        if (!scenario.checks.isEmpty())
            return &scenario.checks.constFirst();
    }
    return nullptr;
}

ExitStatus play(const QList<Scenario> &scenarios, const Options &options, const TillHost &host,
                ScriptedCashier &cashier, const LoyaltyPlugin &plugin)
{
    QueueDrain drain;
    drain.setHandler(loyaltyQueueOwner, makeLoyaltySender());
    drain.start();
    CheckSession session(plugin.system(), host.queue());
    ScenarioPlayer player(session, cashier, drain);
    player.recover(firstCheck(scenarios));
    for (const Scenario &scenario : scenarios)
        player.play(scenario);
    // What could not be delivered in time stays queued: not a failure of the sale.
    deliver(drain, options.drainTime, host.queue());
    console::printLine(u'\n' + statusText(host.queue().status()));
    if (player.differences() > 0)
        console::printLine(u"Расхождений: %1"_s.arg(player.differences()));
    return player.differences() > 0 ? Differed : Succeeded;
}

} // namespace

ExitStatus runScenarios(const Options &options)
{
    ExitStatus statusOfError = Unusable;
    try {
        QList<Scenario> scenarios;
        for (const QString &file : options.scenarioFiles)
            scenarios.append(readScenario(file));
        const TillHost host(options.configFile, TillHost::Access::Work);
        const auto cashier = QSharedPointer<ScriptedCashier>::create(options.codeCommand);
        Singleton<CashierUi>::replace(cashier);
        const LoyaltyPlugin plugin(host.pluginFolder());
        statusOfError = Differed;
        return play(scenarios, options, host, *cashier, plugin);
    } catch (const BasicException &error) {
        return fail(error, statusOfError);
    }
}

ExitStatus drainQueue(const Options &options)
{
    try {
        const TillHost host(options.configFile, TillHost::Access::Work);
        QueueDrain drain;
        drain.setHandler(loyaltyQueueOwner, makeLoyaltySender());
        drain.start();
        const bool delivered = deliver(drain, options.drainTime, host.queue());
        const QueueStatus left = host.queue().status();
        const QJsonObject json = statusAsJson(left, QDateTime::currentDateTime());
        console::printLine(options.queueRequest.json
                               ? QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact))
                               : statusText(left));
        return delivered && left.deadLetters == 0 ? Succeeded : Differed;
    } catch (const BasicException &error) {
        return fail(error, Unusable);
    }
}

ExitStatus printJournal(const Options &options)
{
    try {
        const QDateTime since = QDateTime::fromString(options.journalSince, Qt::ISODate);
        if (!options.journalSince.isEmpty() && !since.isValid())
            throw BasicException(
                u"--since %1: a date such as 2026-03-31 or 2026-03-31T18:00 is expected"_s.arg(options.journalSince));
        const TillHost host(options.configFile, TillHost::Access::Look);
        CheckStore store(host.dataFolder(), CheckStore::Access::Look);
        console::print(journalText(store.journal(since), options.json));
        return Succeeded;
    } catch (const BasicException &error) {
        return fail(error, Unusable);
    }
}

ExitStatus manageQueue(const Options &options)
{
    try {
        const TillHost host(options.configFile, TillHost::Access::Look);
        const QueueAnswer answer = answerTo(options.queueRequest, QDateTime::currentDateTime());
        console::print(answer.text);
        return answer.isFine ? Succeeded : Differed;
    } catch (const BasicException &error) {
        return fail(error, Unusable);
    }
}

} // namespace till
