// Writes log lines to the console.
#include <log4qt/consoleappender.h>
#include <spdlog/sinks/stdout_sinks.h>

namespace Log4Qt {

ConsoleAppender::ConsoleAppender(const LayoutSharedPtr &layout, Target) : AppenderSkeleton(layout)
{}

void ConsoleAppender::activateOptions()
{
    setSink(std::make_shared<spdlog::sinks::stderr_sink_mt>());
}

} // namespace Log4Qt
