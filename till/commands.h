// What kvo-till can do.
#pragma once

#include "endingqueue.h"
#include "exitstatus.h"
#include "queuecommand.h"

#include <core/basicexception.h>
#include <queue/queuedrain.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>

namespace till {

struct ReplayOptions
{
    QString csvFile;
    QStringList columns;   ///< "invoice=InvoiceNo": names of columns, see readDay().
    QString customersFile; ///< To write the customers to; nothing is sold then.
    QString ledger;        ///< Database of loyalty-sim to compare with; empty: none.
    int tills = 1;
    bool isWorker = false; ///< The process is one of the tills, see replayReceipts().
};

struct Options
{
    QString configFile = QStringLiteral("kvo-till.ini");
    QStringList scenarioFiles;
    QString codeCommand; ///< See ScriptedCashier.
    std::chrono::seconds drainTime{5};
    QueueRequest queueRequest;
    ReplayOptions replay;
    QString doctorPhone;  ///< To send a text message to; empty: none is sent.
    bool json = false;    ///< Of the journal, see journalText(), and of the doctor.
    QString journalSince; ///< An ISO date or date and time; empty: from the beginning.
};

// The commands. They throw BasicException when the program could not begin: its status is Unusable then.

/// Plays the scenarios, then gives the queue `drainTime` to deliver what the checks have left in it. Without scenarios
/// it finishes what an earlier run has left, and says what can be done with what stays open.
ExitStatus runScenarios(const Options &options);

/// Sells by hand: each line of the standard input is a step.
ExitStatus sellByHand(const Options &options);

/// Voids the check that an earlier run has left open.
ExitStatus voidOpenCheck(const Options &options);

/// Prints the state of the till; also while it works.
ExitStatus showStatus(const Options &options);

/// Delivers what is queued, for at most `drainTime`, with a progress bar where the standard error output is a terminal.
/// Differed when something is left.
ExitStatus drainQueue(const Options &options);

/// Lists, shows or changes queued requests, or reports the queue's status; also while a till works with the queue.
/// Differed when that status has dead letters or exceeds a threshold.
ExitStatus manageQueue(const Options &options);

/// Prints the journal; also while a till works.
ExitStatus printJournal(const Options &options);

/// Sells every receipt of the file, `tills` at once, each a process with the data folder "till-1", "till-2", ... in
/// "Host:dataFolder". Prints what was left out, what was sold, how long the operations took, and how all journals
/// compare with the ledger. Succeeded when every receipt was sold without a message to the cashier, everything was
/// delivered and nothing differs from the ledger; lines that were left out are no failure.
ExitStatus replay(const Options &options);

// What the commands share.

/// Reports the error on stderr and returns the status.
ExitStatus fail(const BasicException &error, ExitStatus status);

/// Waits for the drain, at most for this time. False when something is left; the reason is printed where the queue
/// cannot be used.
bool deliver(QueueDrain &drain, std::chrono::seconds time, EndingQueue &queue);

} // namespace till
