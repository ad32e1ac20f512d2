// The persistent queue of requests that must not be lost: the side that fills it.
#pragma once

#include "queuestatus.h"

#include <poshost_export.h>

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
    /// leave in the order of their push; the order is the text "basket" in the event's "payload", or, if there is none,
    /// `key`. An event with neither stands alone. Throws BasicException when the event cannot be stored. If
    /// the commit itself failed, or a server did not answer it, the event may be stored all the same; pushing it again
    /// is safe, because handlers are idempotent.
    virtual void push(const QString &owner, const QJsonObject &event, const QString &key);

    /// What has not been accepted by its receiver yet, for the till's status line and the receipt. Throws
    /// BasicException when the database cannot be read.
    virtual QueueStatus status();

    /// Why nothing can be stored now, as a text for the cashier; empty when push() can be expected to work. Costs no
    /// disk access to speak of, unless nothing was written here yet or the last push() or problem() has failed: then
    /// the database is written to, so that the till notices when a disk or a server is back.
    virtual QString problem();

private:
    QueueAccess &access();

    std::unique_ptr<QueueAccess> m_access; // made at the first use
    bool m_mayFail = true;                 // nothing was written yet, or the last time failed
};
