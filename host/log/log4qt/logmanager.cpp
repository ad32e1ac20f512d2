// Keeps the tree of loggers.
#include <log4qt/logmanager.h>

#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtCore/QMutexLocker>

using namespace Qt::Literals::StringLiterals;

namespace Log4Qt {

Logger *LogManager::rootLogger()
{
    static auto *const root = new Logger(u"root"_s, Level::DEBUG_INT, nullptr);
    return root;
}

Logger *LogManager::logger(const QString &name)
{
    // Never destroyed: destructors of static objects may still log.
    static auto *const mutex = new QRecursiveMutex;
    static auto *const loggers = new QHash<QString, Logger *>;

    if (name.isEmpty())
        return rootLogger();
    const QString path = QString(name).replace(u'.', "::"_L1);
    const QMutexLocker locker(mutex);
    if (Logger *known = loggers->value(path))
        return known;
    const qsizetype separator = path.lastIndexOf("::"_L1);
    auto *made = new Logger(path, Level::NULL_INT, logger(path.left(qMax(separator, qsizetype{0}))));
    loggers->insert(path, made);
    return made;
}

} // namespace Log4Qt
