// The doctor's checks of the way to the loyalty service.
#pragma once

#include "doctor.h"
#include "queuesender.h"

#include <net/probe.h>

#include <memory>

namespace till::doctor {

/// How the service is reached; filled by the check "service address".
struct ServiceAccess
{
    LoyaltyQueries queries;
    std::unique_ptr<http::Probe> probe;
    http::ProbeResult handshake;
};

/// Address, encryption, name, connection and TLS. Nothing is sent.
QList<Check> connectionChecks(const std::shared_ptr<ServiceAccess> &service);

/// The name of the check that all exchanges need.
extern const QString secureConnectionCheck;

/// A text from outside, as one line of limited length; and a time as "12.3 ms".
QString cut(const QString &text);
QString milliseconds(std::chrono::microseconds time);

} // namespace till::doctor
