// The doctor's checks of the loyalty service, seen from this machine.
#pragma once

#include "doctor.h"

namespace till::doctor {

/// Address, name, connection, TLS, answer, login, both APIs, clock, times, kept connections; and, when `phone` is
/// given, a text message to it. `trustFile` replaces the system's certificate authorities.
QList<Check> serviceChecks(const QString &phone = {}, const QString &trustFile = {});

} // namespace till::doctor
