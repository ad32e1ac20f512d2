// The persistent queue as the people see it who look after it: what is in it, and what to do with refused events.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

class QueueLease;
class QueueStore;

/// Works on the configured database, see DBQueueBroker, also while tills and drains are at work on it. Used on the
/// thread that has made it. All operations throw BasicException when the database fails; nothing is changed then.
class POSHOST_EXPORT QueueAdmin
{
public:
    /// Opens the database. Throws BasicException when there is none.
    QueueAdmin();
    ~QueueAdmin();
    Q_DISABLE_COPY_MOVE(QueueAdmin)

    enum class State {
        Waiting,   ///< To be sent, perhaps behind an earlier event of its order or after a back-off.
        Sending,   ///< A drain is sending it.
        SetAside,  ///< Refused for good; later events of its order wait behind it.
        Discarded, ///< Given up by a person; kept for the record, and in nobody's way.
    };

    struct Entry
    {
        qint64 id = 0;
        QString owner;
        QString order;     ///< Empty when the event stands alone.
        QString operation; ///< The last segment of the event's "url".
        State state = State::Waiting;
        int attempts = 0;
        QDateTime stored;
        QDateTime nextAttempt; ///< Invalid when it may be sent at once.
        QString lastError;     ///< Phone numbers masked.
        QDateTime refused;     ///< Invalid unless it was refused.
        QDateTime discarded;   ///< Invalid unless it was discarded.
        QString discardReason;
    };

    /// Everything that is stored, in order of push.
    QList<Entry> list() const;

    /// One entry. Throws BasicException when there is none with this id; so do all operations with an id.
    Entry entry(qint64 id) const;

    /// The event itself, for people: credentials hidden, phone numbers masked but for the last four digits. Empty when
    /// what is stored is damaged.
    QJsonObject event(qint64 id) const;

    /// Has an event that was set aside sent again, its attempts counted anew. Throws BasicException when it is not set
    /// aside.
    void retry(qint64 id);

    /// The same for all that were set aside; returns how many.
    int retryAll();

    /// Gives up an event that waits or was set aside; it stays stored with `reason`, and later events of its order are
    /// sent. Throws BasicException when it is being sent or was discarded already, or when `reason` is blank.
    void discard(qint64 id, const QString &reason);

private:
    std::unique_ptr<QueueStore> m_store;
    std::unique_ptr<QueueLease> m_lease;
};
