// The destination of log events.
#pragma once

#include <log4qt/log4qtshared.h>

#include <QtCore/QSharedPointer>

namespace Log4Qt {

class LoggingEvent;

/// Thread-safe.
class LOG4QT_EXPORT Appender
{
public:
    Appender() = default;
    virtual ~Appender();
    Q_DISABLE_COPY_MOVE(Appender)

    virtual void doAppend(const LoggingEvent &event) = 0;
};

using AppenderSharedPtr = QSharedPointer<Appender>;

} // namespace Log4Qt
