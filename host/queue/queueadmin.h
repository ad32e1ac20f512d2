// The persistent queue for the people who look after it: what is in it, and what to do about dead letters.
#pragma once

#include "queuestatus.h"

#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <limits>
#include <memory>
#include <optional>

class QueueLease;
class QueueStore;

/// Works on the configured database, see DBQueueBroker, also while tills and drains use it. Used on the
/// thread that created it. All operations throw BasicException when the database fails; nothing is changed then, unless
/// the commit itself failed.
class POSHOST_EXPORT QueueAdmin
{
public:
    /// Opens the database. Throws MissingDatabase when there is none, but a push or a drain can make it.
    QueueAdmin();
    ~QueueAdmin();
    Q_DISABLE_COPY_MOVE(QueueAdmin)

    enum class State {
        Waiting,    ///< To be sent, perhaps behind an earlier event of its order or after a back-off.
        Sending,    ///< A drain is sending it.
        DeadLetter, ///< Refused for good; later events of its order wait behind it.
        Discarded,  ///< Given up by a person; kept for the record, and in nobody's way.
    };

    /// Safe to show: telephone and card numbers are masked but for their last four digits.
    struct Entry
    {
        qint64 id = 0;
        QString owner;
        QString order;     ///< Empty when the event stands alone.
        QString operation; ///< The last segment of the event's "url".
        QString card;      ///< The card's number; empty when the event has none.
        QString check;     ///< The check's identifier; empty when no event of the order names it.
        State state = State::Waiting;
        int attempts = 0;
        QDateTime stored;
        QDateTime nextAttempt; ///< Invalid when it may be sent at once.
        QString lastError;
        QDateTime refused;   ///< Invalid unless it was refused.
        QDateTime discarded; ///< Invalid unless it was discarded.
        QString discardReason;
        QJsonObject event; ///< Masked, for people; empty when what is stored is damaged. Only entry() fills it.
    };

    /// Selects entries for list(); a member that is not set matches all.
    struct Filter
    {
        std::optional<State> state = {};
        QString order = {};
        QString check = {};
        qsizetype limit = std::numeric_limits<qsizetype>::max(); ///< At most so many, the oldest.
    };

    /// What is stored, in order of push.
    QList<Entry> list(const Filter &filter) const;
    QList<Entry> list() const { return list({}); }

    QueueStatus status() const;

    /// One entry. Throws BasicException when there is none with this id; so do all operations with an id.
    Entry entry(qint64 id) const;

    /// Has a dead letter sent again, its attempts counted anew, or a waiting event sent now, whatever its back-off.
    /// Throws BasicException when it is being sent, was discarded, or waits behind another event of its order.
    void retry(qint64 id);

    /// Has all dead letters sent again; returns how many. Each is changed in a transaction of its own: after an
    /// exception some may have been revived.
    int retryAll();

    /// Gives up a waiting event or a dead letter; it stays stored with `reason`, and later events of its order are
    /// sent. Throws BasicException when it is being sent or was discarded already, or when `reason` is blank.
    void discard(qint64 id, const QString &reason);

    /// Takes a discard back: the event waits again, or is a dead letter again, in its old place. Throws BasicException
    /// when it was not discarded, or while an event of its order is being sent.
    void restore(qint64 id);

private:
    struct Order
    {
        QString owner;
        QString basket;
    };

    Entry stored(qint64 id) const;
    void change(qint64 id, const std::function<void(const Order &order)> &operation);
    bool changeIfStored(qint64 id, const std::function<void(const Order &order)> &operation);
    bool revive(qint64 id);
    void sendNow(qint64 id, const Order &order);
    void requireState(qint64 id, bool allowed, const QString &problem) const;

    std::unique_ptr<QueueStore> m_store;
    std::unique_ptr<QueueLease> m_lease;
};
