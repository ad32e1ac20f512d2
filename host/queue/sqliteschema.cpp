// The steps that lead from each version of the layout to the next. A step that was released never changes again.
#include "sqliteschema.h"

#include "queueconnection.h"
#include "queueerror.h"

#include <QtCore/QList>

#include <array>
#include <initializer_list>

using namespace Qt::Literals::StringLiterals;

namespace {

// AUTOINCREMENT: an id that was given once is never given again, so that order of ids is order of pushes for good.
// The long column comes last, so that a scan does not have to read over it.
constexpr std::initializer_list<QStringView> toVersion1 = {
    u"CREATE TABLE event (id INTEGER PRIMARY KEY AUTOINCREMENT, owner TEXT NOT NULL, basket TEXT, state TEXT NOT NULL, "
    u"attempts INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL, next_attempt INTEGER NOT NULL DEFAULT 0, "
    u"lease INTEGER, rejected INTEGER, last_error TEXT, event TEXT NOT NULL)",
    u"CREATE INDEX event_order ON event (owner, basket, id)",
    u"CREATE INDEX event_next ON event (state, owner, attempts, id)",
    u"PRAGMA user_version = 1",
};

constexpr std::initializer_list<QStringView> toVersion2 = {
    u"ALTER TABLE event ADD COLUMN discarded INTEGER",
    u"ALTER TABLE event ADD COLUMN discard_reason TEXT",
    u"PRAGMA user_version = 2",
};

// Claims in a table of their own, so that an accepted event was written once and deleted once. What differs most comes
// first in the index: SQLite compares the first column faster than the others.
constexpr std::initializer_list<QStringView> toVersion3 = {
    u"CREATE TABLE claim (id INTEGER PRIMARY KEY, lease INTEGER NOT NULL)",
    u"INSERT INTO claim SELECT id, lease FROM event WHERE state = 'sending'",
    u"UPDATE event SET state = 'waiting', attempts = attempts - 1 WHERE state = 'sending'",
    u"ALTER TABLE event DROP COLUMN lease",
    u"DROP INDEX event_order",
    u"CREATE INDEX event_order ON event (basket, owner, id)",
    u"PRAGMA user_version = 3",
};

constexpr std::array steps = {toVersion1, toVersion2, toVersion3};
constexpr int current = steps.size();

int version(QueueConnection &connection)
{
    return connection.value(u"PRAGMA user_version").toInt();
}

} // namespace

void sqliteschema::refuseForeign(QueueConnection &connection)
{
    const QString &file = connection.name();
    int found = 0;
    bool hasTables = false;
    // In one statement, so that both are from one moment: another process may be making the tables.
    connection.read(u"SELECT user_version, EXISTS (SELECT 1 FROM sqlite_master) FROM pragma_user_version", {},
                    [&](const QSqlQuery &row) {
                        found = row.value(0).toInt();
                        hasTables = row.value(1).toBool();
                    });
    if (found < 0 || found > current)
        throw queueerror::make(file, u"файл записан более новой версией программы, обновите программу"_s,
                               u"user_version %1, known %2"_s.arg(QString::number(found), QString::number(current)));
    if (found == 0 && hasTables)
        throw queueerror::make(file, u"файл принадлежит другой программе; проверьте настройку Queue:database"_s,
                               u"user_version 0, but there are tables"_s);
}

void sqliteschema::ensure(QueueConnection &connection)
{
    if (version(connection) == current)
        return;
    QueueTransaction transaction(connection);
    refuseForeign(connection); // again: another process may have been at it since
    for (std::size_t step = version(connection); step < steps.size(); ++step)
        for (const QStringView sql : steps.at(step))
            connection.execute(sql);
    transaction.commit();
}
