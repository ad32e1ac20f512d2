// Formats log lines.
#include <log4qt/loggingevent.h>
#include <log4qt/ttcclayout.h>

#include <QtCore/QDateTime>

using namespace Qt::Literals::StringLiterals;

namespace Log4Qt {

Layout::~Layout() = default;

TTCCLayout::TTCCLayout(DateFormat)
{}

QString TTCCLayout::format(const LoggingEvent &event)
{
    const QString time = QDateTime::fromMSecsSinceEpoch(event.timeStamp()).toString(u"yyyy-MM-dd HH:mm:ss.zzz");
    return u"%1 [%2] %3 %4 - %5\n"_s.arg(time, event.threadName(), event.level().toString(), event.loggerName(),
                                         event.message());
}

} // namespace Log4Qt
