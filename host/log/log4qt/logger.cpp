// Passes log lines up the tree of loggers to the appenders.
#include <log4qt/logger.h>
#include <log4qt/loggingevent.h>

namespace Log4Qt {

Logger::Logger(const QString &name, Level level, Logger *parent) : m_name(name), m_level(level), m_parent(parent)
{}

Logger::~Logger() = default;

bool Logger::isEnabledFor(Level level) const
{
    const Logger *logger = this;
    while (logger->level() == Level::NULL_INT && logger->m_parent)
        logger = logger->m_parent;
    return level >= logger->level();
}

void Logger::log(Level level, const QString &message) const
{
    if (!isEnabledFor(level))
        return;
    const LoggingEvent event(this, level, message);
    for (const Logger *logger = this; logger; logger = logger->m_parent) {
        const QReadLocker locker(&logger->m_lock);
        for (const AppenderSharedPtr &appender : logger->m_appenders)
            appender->doAppend(event);
    }
}

void Logger::addAppender(const AppenderSharedPtr &appender)
{
    const QWriteLocker locker(&m_lock);
    m_appenders.append(appender);
}

void Logger::removeAllAppenders()
{
    const QWriteLocker locker(&m_lock);
    m_appenders.clear();
}

} // namespace Log4Qt
