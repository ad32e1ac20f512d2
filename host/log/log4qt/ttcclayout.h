// The layout "time [thread] LEVEL logger - message"; the time is local, as in "2024-01-31 15:04:05.678".
#pragma once

#include <log4qt/layout.h>

namespace Log4Qt {

class LOG4QT_EXPORT TTCCLayout : public Layout
{
public:
    enum DateFormat { ISO8601 };

    explicit TTCCLayout(DateFormat dateFormat);

    QString format(const LoggingEvent &event) override;
};

} // namespace Log4Qt
