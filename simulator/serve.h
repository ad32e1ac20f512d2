// The "serve" command: runs the server until a signal ends it.
#pragma once

#include "httpserver.h"

#include <filesystem>

namespace sim {

struct ServeOptions
{
    std::filesystem::path database;
    int port = 0;                    ///< 0: a free one
    std::filesystem::path portFile;  ///< empty: none is written
    std::filesystem::path customers; ///< empty: the sample customers, in a new ledger only
    ServerOptions server;
};

/// Serves until SIGTERM or SIGINT; the exit status. Throws std::runtime_error when it cannot start.
int serve(const ServeOptions &options);

} // namespace sim
