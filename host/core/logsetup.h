// Sets up the log as the configuration says.
#pragma once

#include <poshost_export.h>

class Config;

/// Replaces where all log lines of the process go. Read are "Log:file" (empty, the default: no file, and warnings and
/// errors go to the standard error output), "Log:level" (TRACE, DEBUG, INFO, WARN, ERROR or OFF; default INFO),
/// "Log:maxFileSize" (bytes, default 10 MiB) and "Log:maxFiles" (older files that are kept, default 5). An unfit value
/// of these gives its default and a warning line. The folder is made where it is missing; the file has mode 0600 (a
/// Log4Qt library other than the bundled facade may give the files that it makes later the process's default mode).
/// Throws BasicException that names the file and the key when it cannot be opened; the log then stays as it was.
POSHOST_EXPORT void setUpLogging(const Config &config);
