// SQL on a database file beside the program that uses it, as support or a fault might run it.
#pragma once

#include <gtest/gtest.h>

#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

inline void runSql(const QString &file, const QString &statement)
{
    const QString connection = QStringLiteral("sql.h");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        database.setDatabaseName(file);
        EXPECT_TRUE(database.open() && QSqlQuery(database).exec(statement)) << statement.toStdString();
    }
    QSqlDatabase::removeDatabase(connection);
}
