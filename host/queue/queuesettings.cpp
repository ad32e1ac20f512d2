// Reads the queue's section of the configuration.
#include "queuesettings.h"

#include <core/basicexception.h>
#include <core/config.h>
#include <core/singleton.h>

#include <QtCore/QDir>

using namespace Qt::Literals::StringLiterals;

namespace {

QueueSettings::Driver driverOf(const QString &name)
{
    if (name.compare(u"QSQLITE", Qt::CaseInsensitive) == 0)
        return QueueSettings::Driver::Sqlite;
    if (name.compare(u"QPSQL", Qt::CaseInsensitive) == 0)
        return QueueSettings::Driver::PostgreSql;
    throw BasicException(u"Настройка Queue:driver: «%1» не поддерживается, возможны QSQLITE и QPSQL"_s.arg(name));
}

} // namespace

QueueSettings QueueSettings::configured()
{
    const auto config = Singleton<Config>::instance();
    QueueSettings settings;
    settings.driver = driverOf(config->getString(u"Queue:driver"_s, u"QSQLITE"_s));
    if (settings.driver == Driver::Sqlite) {
        const QDir folder(config->getString(u"Host:dataFolder"_s, QDir::currentPath()));
        settings.database = folder.absoluteFilePath(config->getString(u"Queue:database"_s, u"queue.db"_s));
        return settings;
    }
    settings.database = config->getString(u"Queue:database"_s, {});
    settings.host = config->getString(u"Queue:host"_s, {});
    settings.port = config->getInt(u"Queue:port"_s, -1);
    settings.user = config->getString(u"Queue:user"_s, {});
    settings.password = config->getString(u"Queue:password"_s, {});
    settings.options = config->getString(u"Queue:options"_s, {});
    if (settings.database.isEmpty())
        throw BasicException(u"Настройка Queue:database не задана: укажите имя базы данных на сервере"_s);
    return settings;
}

QString QueueSettings::name() const
{
    if (driver == Driver::Sqlite)
        return database;
    const QString server = host.isEmpty() ? u"localhost"_s : host;
    return port < 0 ? u"%1@%2"_s.arg(database, server) : u"%1@%2:%3"_s.arg(database, server, QString::number(port));
}
