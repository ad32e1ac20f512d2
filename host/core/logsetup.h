// Sets up the log as the configuration says.
#pragma once

#include <poshost_export.h>

class Config;

/// Redirects all log lines of the process. Reads "Log:file" (empty, the default: no file, and warnings and errors go to
/// the standard error output), "Log:level" (TRACE, DEBUG, INFO, WARN, ERROR or OFF; default INFO), "Log:maxFileSize"
/// (bytes, default 10 MiB) and "Log:maxFiles" (older files that are kept, default 5). An invalid value is replaced by
/// its default, with a warning. A missing folder is made with mode 0700; all log files have mode 0600. Messages are
/// single lines of at most 4000 characters, see plainText(). Throws BasicException that names the file and the key when
/// it cannot be opened; the log then stays as it was. Until the first call warnings and errors go to the standard error
/// output.
POSHOST_EXPORT void setUpLogging(const Config &config);
