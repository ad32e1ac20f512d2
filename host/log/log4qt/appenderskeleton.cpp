// Hands formatted lines to the logging library.
#include <log4qt/appenderskeleton.h>
#include <log4qt/loggingevent.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/sink.h>

namespace Log4Qt {

Appender::~Appender() = default;

AppenderSkeleton::AppenderSkeleton(const LayoutSharedPtr &layout) : m_layout(layout)
{}

AppenderSkeleton::~AppenderSkeleton() = default;

void AppenderSkeleton::doAppend(const LoggingEvent &event)
{
    if (!m_output || event.level() < m_threshold)
        return;
    const QByteArray line = m_layout->format(event).toUtf8();
    // The overload without arguments: braces in the line are not placeholders.
    m_output->log(spdlog::level::info, spdlog::string_view_t(line.constData(), static_cast<std::size_t>(line.size())));
}

void AppenderSkeleton::setSink(const std::shared_ptr<spdlog::sinks::sink> &sink)
{
    m_output = std::make_shared<spdlog::logger>("log4qt", sink);
    m_output->set_formatter(std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, ""));
    m_output->flush_on(spdlog::level::trace);
}

} // namespace Log4Qt
