// A database as another program sees it, such as a tool of the support staff.
#pragma once

#include <QtCore/QScopeGuard>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <stdexcept>

/// Runs SQL on a file, or on a database of the PostgreSQL server whose socket is in the folder `server`; returns the
/// first column of all rows. Throws std::runtime_error.
inline QVariantList runSql(const QString &database, const QString &statement, const QString &server = {})
{
    const QString name = QStringLiteral("test");
    const auto remove = qScopeGuard([&] { QSqlDatabase::removeDatabase(name); });
    QSqlDatabase other =
        QSqlDatabase::addDatabase(server.isEmpty() ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL"), name);
    other.setDatabaseName(database);
    if (!server.isEmpty()) {
        other.setHostName(server);
        other.setUserName(QStringLiteral("postgres"));
        other.setConnectOptions(QStringLiteral("options='-c search_path=poshost_queue'"));
    }
    const bool isOpen = other.open();
    QSqlQuery query(other);
    if (!isOpen || !query.exec(statement))
        throw std::runtime_error(qPrintable(statement + u' ' + other.lastError().text() + query.lastError().text()));
    QVariantList values;
    while (query.next())
        values.append(query.value(0));
    return values;
}
