// What passes between the check thread and the window: plain values, copied across.
#pragma once

#include "till/checkresult.h"

#include <net/linkstate.h>
#include <queue/queuestatus.h>

#include <QtCore/QDateTime>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QStringList>

namespace till {

/// A question that the cashier must answer before the till continues.
struct Question
{
    enum class Entry { None, Text, Code };

    quint64 number = 0; ///< An answer names it, so that none is taken for the next question's.
    QString text = {};
    QString reason = {}; ///< Why it has come to the question, or what to do; may be empty.
    QString first = {};
    QString second = {};
    Entry entry = Entry::None; ///< What has to be typed for the first button.
    bool isRisky = false;      ///< The first button cannot be undone, so Enter and Esc stand for the second one.
    // When a code is asked for:
    int attemptsLeft = 0;
    QDeadlineTimer deadline = {};
};

struct Answer
{
    enum class Kind { First, Second, SendAgain };

    quint64 question = 0;
    Kind kind = Kind::Second;
    QString text = {}; ///< What was typed.
};

/// What is shown in place of the sale: a table to choose from, or a text to read.
struct Page
{
    enum class Kind { Goods, Parked, Queue, Journal, Receipt, Help, Fault };
    struct Row
    {
        QString id;
        QStringList cells;
        friend bool operator==(const Row &, const Row &) = default;
    };

    Kind kind = Kind::Help;
    QString title = {};
    QString text = {}; ///< Below the table, where there is one.
    QStringList header = {};
    QList<int> numbers = {}; ///< Columns that are aligned to the right.
    int wide = 0;            ///< The column that stretches.
    QList<Row> rows = {};
};

/// The till as it is shown.
struct TillView
{
    quint64 commandsDone = 0;
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
    std::optional<Page> page; ///< What the last command has to show.

    LinkState::State link;                            ///< To the service.
    std::optional<QueueStatus> queue = QueueStatus(); ///< Nothing when it could not be read.

    bool hasLines() const { return isOpen && !check.lines.isEmpty(); }
    bool hasCard() const { return isOpen && !check.card.isEmpty(); }
    bool hasNoCard() const { return !hasCard(); }
    bool canPrice() const { return hasCard() && hasLines(); }
    bool canSpend() const
    {
        return canPrice() && check.spent().isZero() && (!check.isOffered || !check.offered.isZero());
    }
};

} // namespace till
