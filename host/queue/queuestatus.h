// What the queue holds, in numbers.
#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// Costs the same to read whatever the queue holds.
struct QueueStatus
{
    int waiting = 0;              ///< Events to be sent, including those being sent.
    int blocked = 0;              ///< Events that were refused for good, and those that wait behind them.
    QDateTime oldest = {};        ///< When the first of all of them was stored; invalid when there is none.
    QDateTime lastSuccess = {};   ///< When an event was last accepted; invalid when none was yet.
    QString lastError = {};       ///< Of the last event that failed or was refused; phone numbers are masked.
    QDateTime lastErrorTime = {}; ///< Invalid when there was none yet.
};
