// Makes texts from outside safe for a terminal.
#pragma once

#include <string>
#include <vector>

namespace sim {

/// The text on one line: control characters, line ends, escape sequences and bidirectional overrides become blanks.
std::string plainText(const std::string &text);

/// The parts with `separator` between them.
std::string joined(const std::vector<std::string> &parts, const char *separator);

} // namespace sim
