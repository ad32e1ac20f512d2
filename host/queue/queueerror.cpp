// The one form of the queue's error texts.
#include "queueerror.h"

#include <log4qt/logmanager.h>

using namespace Qt::Literals::StringLiterals;

Log4Qt::Logger *queueerror::logger()
{
    static Log4Qt::Logger *const logger = Log4Qt::LogManager::logger(u"poshost.queue"_s); // searched by its name once
    return logger;
}

BasicException queueerror::make(const QString &database, const QString &problem, const QString &reason)
{
    const QString text = u"Очередь запросов «%1»: %2"_s.arg(database, problem);
    logger()->error(u"%1 (%2)"_s.arg(text, reason));
    return BasicException(text);
}
