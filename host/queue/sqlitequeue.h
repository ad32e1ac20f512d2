// The queue in a file of its own.
#pragma once

#include "queuedatabase.h"

/// See QueueDatabase::open().
std::unique_ptr<QueueDatabase> openSqliteQueue(const QueueSettings &settings, DatabaseConnection::Commits commits,
                                               DatabaseConnection::Missing missing);
