// The doctor's checks of what waits on this machine.
#pragma once

#include "doctor.h"

namespace till::doctor {

/// The queue of requests, and those in it that were refused. Nothing is changed.
QList<Check> queueChecks();

} // namespace till::doctor
