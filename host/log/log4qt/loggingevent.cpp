// Records time and thread of a log line.
#include <log4qt/logger.h>
#include <log4qt/loggingevent.h>
#include <unistd.h>

#include <QtCore/QDateTime>
#include <QtCore/QThread>

namespace Log4Qt {

namespace {

QString currentThreadName()
{
    const QString name = QThread::currentThread()->objectName();
    return name.isEmpty() ? QString::number(::gettid()) : name;
}

} // namespace

LoggingEvent::LoggingEvent(const Logger *logger, Level level, const QString &message)
    : m_level(level),
      m_loggerName(logger->name()),
      m_message(message),
      m_threadName(currentThreadName()),
      m_timeStamp(QDateTime::currentMSecsSinceEpoch())
{}

} // namespace Log4Qt
