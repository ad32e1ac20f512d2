// The loggers of the process.
#pragma once

#include <log4qt/logger.h>

namespace Log4Qt {

/// Until the program adds appenders of its own, warnings and errors go to the standard error output and all other
/// lines nowhere. Thread-safe.
class LOG4QT_EXPORT LogManager
{
public:
    /// The parent of all loggers.
    static Logger *rootLogger();

    /// The logger of this name, made by the first call. "a.b" is the same as "a::b", a child of "a"; an empty name is
    /// the root logger. Never null, never destroyed.
    static Logger *logger(const QString &name);

private:
    static Logger *makeRootLogger();
};

} // namespace Log4Qt
