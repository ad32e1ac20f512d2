// Turns log events into text.
#pragma once

#include <log4qt/log4qtshared.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace Log4Qt {

class LoggingEvent;

class LOG4QT_EXPORT Layout
{
public:
    virtual ~Layout();

    /// Applies changed settings.
    virtual void activateOptions() {}

    /// The text of `event`, with a line end.
    virtual QString format(const LoggingEvent &event) = 0;
};

using LayoutSharedPtr = QSharedPointer<Layout>;

} // namespace Log4Qt
