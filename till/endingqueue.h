// The till's side of the persistent queue: while a check ends, requests are held back until the check itself is done.
#pragma once

#include <queue/dbqueuebroker.h>

#include <QtCore/QVariant>

#include <functional>

namespace till {

/// Put in place as Singleton<DBQueueBroker>. Between hold() and release() it hands requests over, otherwise it stores
/// them at once, like its base.
///
/// Why hold back: the drain may deliver a request the moment it is stored. If a loyalty system's commit() stored the
/// posting of an order and the till were killed before it has noted that the check is closed, commit() would run again
/// and meet an order that is posted already. So what an ending wants to send is first written with the check, in the
/// same write that closes it, and put on the queue after that, again and again until the check is in the books.
class EndingQueue : public DBQueueBroker
{
public:
    /// Takes a request in plain variants, fit for the check's file and for store().
    using Holder = std::function<void(const QVariant &request)>;

    void push(const QString &owner, const QJsonObject &event, const QString &key) override;

    void hold(const Holder &holder) { m_holder = holder; }
    void release() { m_holder = nullptr; }

    /// Stores requests that were held back. Throws BasicException when that fails; what was stored by then stays on the
    /// queue.
    void store(const QVariantList &requests);

private:
    Holder m_holder;
};

} // namespace till
