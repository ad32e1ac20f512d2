// The queue on a PostgreSQL server, in the schema "poshost_queue".
#pragma once

#include "queuedatabase.h"

/// See QueueDatabase::open().
std::unique_ptr<QueueDatabase> openPostgresQueue(const QueueSettings &settings, DatabaseConnection::Commits commits,
                                                 DatabaseConnection::Missing missing);
