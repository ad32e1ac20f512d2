// The names of the log levels.
#include <log4qt/level.h>

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace Log4Qt {

namespace {

constexpr std::array<std::pair<Level::Value, QLatin1StringView>, 9> levelNames{{
    {Level::NULL_INT, "NULL"_L1},
    {Level::ALL_INT, "ALL"_L1},
    {Level::TRACE_INT, "TRACE"_L1},
    {Level::DEBUG_INT, "DEBUG"_L1},
    {Level::INFO_INT, "INFO"_L1},
    {Level::WARN_INT, "WARN"_L1},
    {Level::ERROR_INT, "ERROR"_L1},
    {Level::FATAL_INT, "FATAL"_L1},
    {Level::OFF_INT, "OFF"_L1},
}};

} // namespace

QString Level::toString() const
{
    for (const auto &[value, name] : levelNames) {
        if (value == m_value)
            return name;
    }
    return QString::number(m_value);
}

Level Level::fromString(const QString &level, bool *ok)
{
    for (const auto &[value, name] : levelNames) {
        if (level == name) {
            if (ok)
                *ok = true;
            return value;
        }
    }
    if (ok)
        *ok = false;
    return NULL_INT;
}

} // namespace Log4Qt
