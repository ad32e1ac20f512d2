// Leases as advisory locks of PostgreSQL.
#include "sessionlease.h"

#include "queueconnection.h"

// Waits where the server has not noticed yet that the connection before is gone.
void SessionLease::hold(QueueConnection &connection)
{
    if (m_heldIn == connection.identifier())
        return;
    connection.value(u"SELECT pg_advisory_lock(?)", {id()});
    m_heldIn = connection.identifier();
}

// Asks by taking it, until the end of the transaction.
bool SessionLease::isHeldByOther(qint64 lease, QueueConnection &connection) const
{
    return !connection.value(u"SELECT pg_try_advisory_xact_lock(?)", {lease}).toBool();
}
