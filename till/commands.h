// What kvo-till can do.
#pragma once

#include "queuecommand.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>

namespace till {

/// Exit statuses of the program.
enum ExitStatus : int {
    Succeeded = 0,
    Differed = 1, ///< An expectation did not hold, an operation failed, or requests could not be delivered.
    Unusable = 2  ///< The command line, a scenario, the configuration or the plugin is at fault; nothing was sold.
};

struct Options
{
    QString configFile;
    QStringList scenarioFiles;
    QString codeCommand; ///< See ScriptedCashier.
    std::chrono::seconds drainTime{5};
    QueueRequest queueRequest;
    bool json = false;    ///< Of the journal, see journalText().
    QString journalSince; ///< An ISO date or date and time; empty: from the beginning.
};

/// Plays the scenarios, then gives the queue `drainTime` to deliver what the checks have left in it. Without scenarios
/// it finishes what an earlier run has left.
ExitStatus runScenarios(const Options &options);

/// Delivers what is queued, for at most `drainTime`, with a progress bar where the standard error output is a terminal.
/// Differed when something is left.
ExitStatus drainQueue(const Options &options);

/// Tells what is queued and changes it; also while a till works with the queue. Differed when the queue's status is not
/// fine.
ExitStatus manageQueue(const Options &options);

/// Prints the journal; also while a till works.
ExitStatus printJournal(const Options &options);

} // namespace till
