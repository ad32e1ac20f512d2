// The layout of the queue's database and how an older one is brought up to date.
#pragma once

class QueueConnection;

namespace queueschema {

/// Makes the tables of a new database or migrates those of an older one, in one transaction: either everything is
/// done, or nothing. Throws BasicException when that fails, when the database was written by a newer version, and when
/// it belongs to another program; it is left as it was then.
void ensure(QueueConnection &connection);

} // namespace queueschema
