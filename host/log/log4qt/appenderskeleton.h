// What all appenders have: a threshold, a layout, and a sink for the formatted lines.
#pragma once

#include <log4qt/appender.h>
#include <log4qt/layout.h>
#include <log4qt/level.h>

#include <memory>

namespace spdlog {
class logger;
namespace sinks {
class sink;
}
} // namespace spdlog

namespace Log4Qt {

class LOG4QT_EXPORT AppenderSkeleton : public Appender
{
public:
    ~AppenderSkeleton() override;

    /// Drops events below this level; by default none. Set it before the appender is in use.
    void setThreshold(Level level) { m_threshold = level; }

    /// Opens the appender with its current settings; until then, and if that fails, it drops every event. Reports a
    /// failure on stderr.
    virtual void activateOptions() = 0;

    void doAppend(const LoggingEvent &event) override;

protected:
    explicit AppenderSkeleton(const LayoutSharedPtr &layout);

    /// Sends each line to `sink` at once. Errors of the sink are reported on stderr, at most one a second.
    void setSink(const std::shared_ptr<spdlog::sinks::sink> &sink);

private:
    Level m_threshold;
    LayoutSharedPtr m_layout;
    std::shared_ptr<spdlog::logger> m_output;
};

} // namespace Log4Qt
