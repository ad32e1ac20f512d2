// The "tail" command: a server's requests as they come, in a terminal.
#pragma once

#include <cstdint>

namespace sim {

struct TailOptions
{
    int port{};
    bool json = false;
    unsigned last = 10; ///< past requests to begin with
};

/// Prints the requests, once they are answered, until the server ends; the exit status. In colour where standard
/// output is a terminal and NO_COLOR is not set. Throws std::runtime_error when there is no server.
int tail(const TailOptions &options);

} // namespace sim
