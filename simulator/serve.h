// The "serve" command: runs the server until a signal ends it.
#pragma once

#include "httpserver.h"

#include <filesystem>

namespace sim {

struct ServeOptions
{
    std::filesystem::path database;
    int port{};                      ///< 0: a free one
    std::filesystem::path portFile;  ///< empty: none is written
    std::filesystem::path customers; ///< empty: the sample customers, only in a new ledger
    ServerOptions server;
};

/// Serves until SIGTERM or SIGINT. Returns the exit status. Throws std::runtime_error if it cannot start.
int serve(const ServeOptions &options);

} // namespace sim
