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

void printQueue(const DBQueueBroker::Status &status)
{
    if (status.waiting + status.setAside == 0) {
        console::printLine(u"Очередь пуста"_s);
        return;
    }
    console::printLine(u"В очереди: ожидает отправки %1, отклонено и отложено %2, самое раннее от %3"_s.arg(
        QString::number(status.waiting), QString::number(status.setAside),
        status.oldest.toString(u"dd.MM.yyyy HH:mm:ss"_s)));
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
    std::fputc('\n', stderr);
    return delivered;
}

/// Waits for the drain and tells what is left.
bool deliver(QueueDrain &drain, std::chrono::seconds time, const EndingQueue &queue)
{
    drain.wakeUp();
    const bool delivered =
        ::isatty(STDERR_FILENO) ? waitWithProgress(drain, time, queue) : drain.waitUntilDrained(time);
    console::printLine(QString());
    printQueue(queue.status());
    return delivered;
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
        return delivered && host.queue().status().setAside == 0 ? Succeeded : Differed;
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
        console::print(answerTo(options.queueRequest, QDateTime::currentDateTime()));
        return Succeeded;
    } catch (const BasicException &error) {
        return fail(error, Unusable);
    }
}

} // namespace till
