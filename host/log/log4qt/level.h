// The severity of a log line, in ascending order.
#pragma once

#include <log4qt/log4qtshared.h>

#include <QtCore/QString>

#include <compare>

namespace Log4Qt {

class LOG4QT_EXPORT Level
{
public:
    enum Value {
        NULL_INT, ///< No level: a logger takes its parent's.
        ALL_INT,
        TRACE_INT,
        DEBUG_INT,
        INFO_INT,
        WARN_INT,
        ERROR_INT,
        FATAL_INT,
        OFF_INT
    };

    Level(Value value = NULL_INT) : m_value(value) {}

    /// "WARN"; "NULL" for no level.
    QString toString() const;

    /// Reads what toString() writes. NULL_INT, and `ok` false, for anything else.
    static Level fromString(const QString &level, bool *ok = nullptr);

    friend auto operator<=>(const Level &, const Level &) = default;

private:
    Value m_value;
};

} // namespace Log4Qt
