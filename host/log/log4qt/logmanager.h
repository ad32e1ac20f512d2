// The loggers of the process.
#pragma once

#include <log4qt/logger.h>

namespace Log4Qt {

/// Lines are dropped until the root logger has an appender. Thread-safe.
class LOG4QT_EXPORT LogManager
{
public:
    /// The parent of all loggers.
    static Logger *rootLogger();

    /// The logger of this name, created by the first call. "a.b" is the same as "a::b", a child of "a"; an empty name
    /// means the root logger. Never null, never destroyed.
    static Logger *logger(const QString &name);
};

} // namespace Log4Qt
