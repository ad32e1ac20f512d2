// One of the tills that replay a day: a process of its own, told by its parent what to sell.
#pragma once

#include "replayday.h"

#include <QtCore/QMap>

#include <chrono>

namespace till {

/// What a till reports of each receipt, as a line of JSON on its standard output.
struct ReplayedReceipt
{
    qsizetype index = 0; ///< In Day::receipts.
    bool isClosed = false;
    QMap<QString, QList<double>> milliseconds; ///< By operation.
    QStringList messages;                      ///< Failures and what else was shown to the cashier.
    Money sum;                                 ///< Of the check, before points.
    Money spent;
    Money earned;

    QByteArray toJson() const;
    static ReplayedReceipt fromJson(const QByteArray &line);
};

/// Sells the receipts whose indices come in on the standard input, one a line, and reports each. At the end of the
/// input the queue gets `drainTime` to deliver. A check that an earlier run has left open is voided first. Returns
/// whether everything was delivered. Throws BasicException when the till cannot work.
[[nodiscard]] bool replayReceipts(const Day &day, const QString &configFile, std::chrono::seconds drainTime);

} // namespace till
