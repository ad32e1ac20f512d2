// A named source of log lines.
#pragma once

#include <log4qt/appender.h>
#include <log4qt/level.h>

#include <QtCore/QList>
#include <QtCore/QReadWriteLock>
#include <QtCore/QString>

#include <atomic>

namespace Log4Qt {

/// Obtained from LogManager and never destroyed. Lines go to the appenders of the logger and of all its parents;
/// placeholders in messages have no meaning. Thread-safe.
class LOG4QT_EXPORT Logger
{
public:
    Q_DISABLE_COPY_MOVE(Logger)

    QString name() const { return m_name; }

    /// Lines below this level are dropped; NULL_INT takes the parent's level.
    Level level() const { return m_level; }
    void setLevel(Level level) { m_level = level; }

    bool isEnabledFor(Level level) const;

    void debug(const QString &message) const { log(Level::DEBUG_INT, message); }
    void info(const QString &message) const { log(Level::INFO_INT, message); }
    void warn(const QString &message) const { log(Level::WARN_INT, message); }
    void error(const QString &message) const { log(Level::ERROR_INT, message); }
    void log(Level level, const QString &message) const;

    void addAppender(const AppenderSharedPtr &appender);
    void removeAllAppenders();

private:
    friend class LogManager;
    Logger(const QString &name, Level level, Logger *parent);
    ~Logger();

    QString m_name;
    std::atomic<Level> m_level;
    Logger *m_parent;
    mutable QReadWriteLock m_lock;
    QList<AppenderSharedPtr> m_appenders;
};

} // namespace Log4Qt
