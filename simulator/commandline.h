// What the programs' command lines have in common.
#pragma once

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>

namespace sim {

/// Opens closed standard streams on /dev/null; otherwise a file opened later, such as the ledger, could take the place
/// of such a stream and receive what is printed.
inline void openStandardStreams()
{
    int descriptor = ::open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY);
    ::close(descriptor);
}

/// Parses the arguments. Returns the status to exit with at once: 0 after --help and --version, 2 for a usage error,
/// which is reported on stderr; empty when the program is to continue. From here on, everything the process creates is
/// readable by its owner only.
inline std::optional<int> startProgram(CLI::App &app, int argc, char **argv)
{
    openStandardStreams();
    ::umask(S_IRWXG | S_IRWXO);
    app.set_version_flag("--version", app.get_name() + " " KVO_SIMULATOR_VERSION);
    app.set_help_all_flag("--help-all", "Print help for all commands and exit");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    return std::nullopt;
}

} // namespace sim
