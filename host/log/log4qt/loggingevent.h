// One log line on its way to the appenders.
#pragma once

#include <log4qt/level.h>

#include <QtCore/QString>

namespace Log4Qt {

class Logger;

class LOG4QT_EXPORT LoggingEvent
{
public:
    /// An event on the current thread, now.
    LoggingEvent(const Logger *logger, Level level, const QString &message);

    Level level() const { return m_level; }
    QString loggerName() const { return m_loggerName; }
    QString message() const { return m_message; }

    /// The thread's object name, or its number if it has none.
    QString threadName() const { return m_threadName; }

    /// Milliseconds since 1970-01-01T00:00:00 UTC.
    qint64 timeStamp() const { return m_timeStamp; }

private:
    Level m_level;
    QString m_loggerName;
    QString m_message;
    QString m_threadName;
    qint64 m_timeStamp;
};

} // namespace Log4Qt
