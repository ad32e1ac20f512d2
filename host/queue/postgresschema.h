// The layout of the queue on a PostgreSQL server: the schema "poshost_queue".
#pragma once

#include "queueconnection.h"

namespace postgresschema {

/// Makes the schema where it is missing, or migrates an older one, in one transaction, one till at a time. Throws
/// BasicException when that fails, when it must not be made, or when it was made by a newer version of the program;
/// nothing is changed then.
void ensure(QueueConnection &connection, QueueConnection::Missing missing);

} // namespace postgresschema
