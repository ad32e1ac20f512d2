// Who is sending what: an identifier for a drain that is certain to be given up when its process dies.
#pragma once

#include <QtCore/QtGlobal>

class QueueConnection;

/// A random number with a lock that ends with its holder, however that ends; so whether the holder of a lease lives is
/// a fact that can be asked for, independent of clocks and of how long an exchange takes. What the lock is depends on
/// the kind of database. All operations throw BasicException when they fail.
class QueueLease
{
public:
    virtual ~QueueLease() = default;
    Q_DISABLE_COPY_MOVE(QueueLease)

    qint64 id() const { return m_id; }

    /// Takes the lock where it is not held, or not any more. To be called before anything is claimed.
    virtual void hold(QueueConnection &connection) = 0;

    /// True when another drain lives that holds `lease`. To be called inside a transaction, which keeps the answer
    /// from changing before what that drain has left is released.
    virtual bool isHeldByOther(qint64 lease, QueueConnection &connection) const = 0;

protected:
    QueueLease();

private:
    qint64 m_id;
};
