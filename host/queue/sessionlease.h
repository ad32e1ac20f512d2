// The lease of a drain on a PostgreSQL server.
#pragma once

#include "queuelease.h"

#include <QtCore/QString>

/// The lock is an advisory one of the drain's own connection, so the server drops it with the connection, and nothing
/// can be claimed on a connection that has lost it. A new connection takes the same number again: so a drain goes on
/// with what it had in hand unless another one has taken that over meanwhile.
class SessionLease : public QueueLease
{
public:
    void hold(QueueConnection &connection) override;
    bool isHeldByOther(qint64 lease, QueueConnection &connection) const override;

private:
    QString m_heldIn; // the connection's identifier
};
