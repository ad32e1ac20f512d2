// The one form of the databases' error texts.
#include "databaseerror.h"

#include <log4qt/logmanager.h>

using namespace Qt::Literals::StringLiterals;

Log4Qt::Logger *databaseerror::logger()
{
    static Log4Qt::Logger *const logger = Log4Qt::LogManager::logger(u"poshost.database"_s);
    return logger;
}

BasicException databaseerror::make(const QString &title, const QString &problem, const QString &reason)
{
    const QString text = title + u": "_s + problem;
    logger()->error(u"%1 (%2)"_s.arg(text, reason));
    return BasicException(text);
}
