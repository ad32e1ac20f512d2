// The doctor's checks of the loyalty service, seen from this machine.
#pragma once

#include "doctor.h"

namespace till::doctor {

/// Address, name, connection, TLS, answer, login, both APIs, clock, times, kept connections; and, when `phone` is
/// given, a text message to it.
QList<Check> serviceChecks(const QString &phone = {});

} // namespace till::doctor
