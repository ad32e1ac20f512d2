// `kvo-till replay`: a day of real receipts through the loaded plugin.
#pragma once

#include "commands.h"

namespace till {

struct ReplayOptions
{
    QString configFile;
    QString csvFile;
    QStringList columns;   ///< "invoice=InvoiceNo": names of columns, see readDay().
    QString customersFile; ///< To write the customers to; nothing is sold then.
    QString ledger;        ///< Database of loyalty-sim to compare with; empty: none.
    int tills = 1;
    std::chrono::seconds drainTime{5};
    bool isWorker = false; ///< The process is one of the tills, see replayReceipts().
};

/// Sells every receipt of the file, `tills` at once, each a process with the data folder "till-1", "till-2", ... in
/// "Host:dataFolder". Prints what was left out, what was sold, how long the operations took, and how all journals
/// compare with the ledger. Succeeded when every receipt was sold without a message to the cashier, everything was
/// delivered and nothing differs from the ledger; lines that were left out are no failure.
ExitStatus replay(const ReplayOptions &options);

} // namespace till
