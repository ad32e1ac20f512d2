// Which database the queue is kept in, and how it is reached.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

struct POSHOST_EXPORT QueueSettings
{
    enum class Driver {
        Sqlite,     ///< One file on the till's own disk.
        PostgreSql, ///< A server; one database may serve many tills.
    };

    Driver driver = Driver::Sqlite;
    QString database = {}; ///< The file, or the database's name. All that follows is for a server only.
    QString host = {};     ///< A machine, or the folder of a Unix socket; empty: the usual socket of this machine.
    int port = -1;         ///< -1: the usual one.
    QString user = {};     ///< Empty: the name of the system's user.
    QString password = {}; ///< Goes to the server only, never to a log.
    QString options = {};  ///< Further options of libpq, separated by ";".

    /// Section "Queue" of the configuration; a file is meant relative to "Host:dataFolder" (default: the working
    /// folder). Throws BasicException for an unknown driver, and for a server without a database name.
    static QueueSettings configured();

    /// The database as shown to people: the file's path, or `database@host[:port]`.
    QString name() const;
};
