// Replaces the system's name resolution in the test program: "unknown.test" does not exist, and the answer for
// "slow.test" is held back until release().
#pragma once

namespace nameserver {

void release();

/// Whether a question for "slow.test" has been answered, or nobody has waited long enough for release().
bool hasAnswered();

} // namespace nameserver
