// The proof's figures for people.
#pragma once

#include "proof.h"

namespace prove {

/// Prints everything that was counted, and what was found.
void print(const Result &result, const Options &options);

} // namespace prove
