// What passes between the window and the check thread: commands one way, the state of the till the other. Plain values,
// copied across.
#pragma once

#include "till/checkresult.h"

#include <queue/dbqueuebroker.h>

#include <QtCore/QDateTime>
#include <QtCore/QStringList>

#include <chrono>

namespace till {

/// One thing that the cashier wants done.
struct Command
{
    enum class Kind {
        Add,    ///< `text` is an entry, see Catalogue::find().
        Change, ///< `line`; `text` is a quantity, or "=" and a price.
        Remove, ///< `line`
        Restore,
        Card,  ///< `text` is the card's number.
        Phone, ///< `text` is the telephone number.
        Price,
        Spend,
        Park,
        Take, ///< `text` identifies the parked check.
        Close,
        Void,
        ShowParked,
        ShowQueue,
        RetryRequest,   ///< `text` is the request's number.
        DiscardRequest, ///< `text` is the request's number, `reason` says why.
        ShowJournal,
        ShowReceipt, ///< `text` identifies the finished check.
        SaveReceipt, ///< `text` is what to save.
    };

    Kind kind = Kind::Add;
    QString text = {};
    QString reason = {};
    int line = 0;
};

/// What the check thread wants to know from the cashier before it goes on.
struct Question
{
    quint64 number = 0; ///< An answer names it, so that none is taken for the next question's.
    QString text;
    QString reason; ///< Why it has come to the question; may be empty.
    QString first;
    QString second;
    // When a code is asked for:
    bool isCode = false;
    bool isCodeRefused = false;
    QString phone; ///< Masked.
    Money points;
    int attemptsLeft = 0;
    QDateTime deadline;
};

struct Answer
{
    enum class Kind { First, Second, Code, SendAgain, GiveUp };

    quint64 question = 0;
    Kind kind = Kind::Second;
    QString code = {};
};

/// A table to show: goods to choose from, parked checks, queued requests, the day's journal.
struct Listing
{
    enum class Kind { None, Goods, Parked, Queue, Journal };
    struct Row
    {
        QString id;
        QStringList cells;
    };

    Kind kind = Kind::None;
    QStringList header;
    QList<Row> rows;
    QString summary;
};

/// The till as it is shown.
struct TillView
{
    quint64 commandsDone = 0;
    bool isReady = false;
    QString fault; ///< Why the till cannot work at all.
    bool isDark = false;

    bool isOpen = false;
    bool isRestorable = false;
    CheckResult check; ///< When a check is open.

    QString waitingFor; ///< Empty when the till is idle.
    QDateTime waitingSince;
    std::optional<Question> question;

    QString message;
    bool isWarning = false;
    QString receipt; ///< Of the check that has just ended, or was asked for.
    Listing listing;

    bool isServiceReachable = true;
    QDateTime serviceSince; ///< When that was first noticed; invalid while nothing has been sent.
    DBQueueBroker::Status queue;

    /// Whether it makes sense to give such a command now. The line of Change and Remove is the caller's affair.
    bool allows(Command::Kind kind) const;
};

} // namespace till
