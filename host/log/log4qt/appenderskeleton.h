// What all appenders have: a threshold, a layout and a place where formatted lines go.
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

    /// Events below this level are dropped; by default none is. To be set before the appender is in use.
    void setThreshold(Level level) { m_threshold = level; }

    /// Opens the appender with its current settings; until then, and when that fails, it drops every event. A failure
    /// is told on stderr.
    virtual void activateOptions() = 0;

    void doAppend(const LoggingEvent &event) override;

protected:
    explicit AppenderSkeleton(const LayoutSharedPtr &layout);

    /// From now on lines go to `sink`, each at once. Errors of the sink are told on stderr, at most one each second.
    void setSink(const std::shared_ptr<spdlog::sinks::sink> &sink);

private:
    Level m_threshold;
    LayoutSharedPtr m_layout;
    std::shared_ptr<spdlog::logger> m_output;
};

} // namespace Log4Qt
