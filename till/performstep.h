// Carries out the steps of a scenario, whether they were read from a file or typed.
#pragma once

#include "checksession.h"
#include "scenario.h"

namespace till {

/// Returns the check that the step has ended. Throws BasicException like the session's operations.
std::optional<CheckResult> perform(CheckSession &session, const Step &step);

} // namespace till
