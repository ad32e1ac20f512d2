// What kvo-till can do.
#pragma once

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
};

/// Plays the scenarios, then gives the queue `drainTime` to deliver what the checks have left in it. Without scenarios
/// it finishes what an earlier run has left.
ExitStatus runScenarios(const Options &options);

/// Delivers what is queued, for at most `drainTime`. Differed when something is left.
ExitStatus drainQueue(const Options &options);

/// Prints how much is queued.
ExitStatus showQueue(const Options &options);

} // namespace till
