// Sets up the log as the configuration says.
#pragma once

#include <poshost_export.h>

class Config;

/// Redirects all log lines of the process. Reads "Log:file" (empty, the default: no file, and warnings and errors go to
/// the standard error output), "Log:level" (ALL, TRACE, DEBUG, INFO, WARN, ERROR, FATAL or OFF; default INFO),
/// "Log:maxFileSize" (bytes, default 10 MiB) and "Log:maxFiles" (older files to keep, default 5). Replaces an invalid
/// value by its default, with a warning. Missing folders are created with mode 0700; all log files have mode 0600. Each
/// message is one line of at most 4000 characters, see plainText(). If the file cannot be opened, throws BasicException
/// that names it and the key, and leaves the log unchanged. Until the first call warnings and errors go to the standard
/// error output.
POSHOST_EXPORT void setUpLogging(const Config &config);
