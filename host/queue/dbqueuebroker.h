// The persistent queue of requests that must not be lost: the side that fills it.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <memory>

class QueueAccess;

/// One per process through Singleton<DBQueueBroker>; used on the check thread only. The database is the one of the
/// configuration ("Queue:database", default: the file "queue.db" in the folder "Host:dataFolder"; see docs/queue.md for
/// a server).
class POSHOST_EXPORT DBQueueBroker
{
public:
    DBQueueBroker();
    virtual ~DBQueueBroker();
    Q_DISABLE_COPY_MOVE(DBQueueBroker)

    /// Stores an event for the drain to deliver to `owner`, and returns only when it is durable. Events of one order
    /// leave in the order of their push; the order is the text "basket" in the event's "payload", or, where there is
    /// none, `key`. An event with neither stands alone. Throws BasicException when the event cannot be stored; nothing
    /// is stored then.
    virtual void push(const QString &owner, const QJsonObject &event, const QString &key);

    /// How much has not been accepted by its receiver yet, for the till's status line and the receipt.
    struct Status
    {
        int waiting = 0;  ///< Events to be sent, those in flight included.
        int setAside = 0; ///< Events that were refused for good, and those that wait behind them.
        QDateTime oldest; ///< When the oldest of all of them was stored; invalid when there is none.
    };
    /// Throws BasicException when the database cannot be read.
    virtual Status status() const;

private:
    QueueAccess &access() const;

    mutable std::unique_ptr<QueueAccess> m_access; // made at the first use
};
