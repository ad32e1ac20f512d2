// The host's clock, obtained through MockFactory so that tests can set it.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDateTime>

class POSHOST_EXPORT CurrentTime
{
public:
    virtual ~CurrentTime();

    /// Now, in local time, to the millisecond.
    virtual QDateTime currentDateTime() const;
};
