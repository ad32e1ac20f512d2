// The doctor's checks of what is kept on this machine: requests and checks.
#pragma once

#include "doctor.h"

namespace till::doctor {

/// The queue of requests, those in it that were refused, the open check, and the checks that were put aside. Nothing is
/// changed.
QList<Check> storeChecks();

} // namespace till::doctor
