// How important a log line is.
#pragma once

#include <log4qt/log4qtshared.h>

#include <QtCore/QString>

#include <compare>

namespace Log4Qt {

class LOG4QT_EXPORT Level
{
public:
    enum Value {
        NULL_INT = 0, ///< No level: a logger takes its parent's.
        ALL_INT = 32,
        TRACE_INT = 64,
        DEBUG_INT = 96,
        INFO_INT = 128,
        WARN_INT = 150,
        ERROR_INT = 182,
        FATAL_INT = 214,
        OFF_INT = 255
    };

    Level(Value value = NULL_INT) : m_value(value) {}

    int toInt() const { return m_value; }

    /// "WARN"; "NULL" for no level.
    QString toString() const;

    /// Reads what toString() writes, in any case. `ok` tells whether `level` is a level; NULL_INT when it is not.
    static Level fromString(const QString &level, bool *ok = nullptr);

    friend auto operator<=>(const Level &, const Level &) = default;

private:
    Value m_value;
};

} // namespace Log4Qt
