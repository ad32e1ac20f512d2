// The layout of the queue's database file and how an older one is brought up to date.
#pragma once

class QueueConnection;

namespace sqliteschema {

/// Throws BasicException when the database was written by a newer version of the program, or by another program;
/// nothing is changed.
void refuseForeign(QueueConnection &connection);

/// Makes the tables of a new database or migrates those of an older one, in one transaction: either everything is
/// done, or nothing. Throws BasicException when that fails.
void ensure(QueueConnection &connection);

} // namespace sqliteschema
