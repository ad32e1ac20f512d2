// Writes log lines to the standard error output.
#pragma once

#include <log4qt/appenderskeleton.h>

namespace Log4Qt {

class LOG4QT_EXPORT ConsoleAppender : public AppenderSkeleton
{
public:
    enum Target { STDERR_TARGET };

    ConsoleAppender(const LayoutSharedPtr &layout, Target target);

    void activateOptions() override;
};

} // namespace Log4Qt
