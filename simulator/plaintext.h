// Makes texts from outside safe for a terminal.
#pragma once

#include <string>

namespace sim {

/// The text on one line: control characters, line ends, escape sequences and bidirectional overrides become blanks.
std::string plainText(const std::string &text);

} // namespace sim
