// The till's state, for people.
#pragma once

#include "tillhost.h"

#include <checks/checkstore.h>

namespace till {

/// Whether loyalty works or why not, the open check with what it waits for and how to go on, the checks that were put
/// aside with the reasons, and the queue. Throws BasicException when the check store cannot be read.
QString tillStatusText(TillHost &host, CheckStore &store, const QString &configFile);

} // namespace till
