// Makes the layout of the queue on a server. An older layout, when there is one, is to be brought up to date in steps
// as in sqliteschema.cpp.
#include "postgresschema.h"

#include "queueerror.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int current = 1;

// Tills that start together make it one after the other. Any number that is not another program's.
constexpr QStringView lock = u"SELECT pg_advisory_xact_lock(7164013200591)";

// As in a file, but ids are drawn before the commit: they are in order of push for each till, not across tills.
constexpr std::array layout = {
    QStringView(
        u"CREATE TABLE event (id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY, owner TEXT NOT NULL, basket TEXT, "
        u"state TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, created BIGINT NOT NULL, "
        u"next_attempt BIGINT NOT NULL DEFAULT 0, lease BIGINT, rejected BIGINT, last_error TEXT, discarded BIGINT, "
        u"discard_reason TEXT, event TEXT NOT NULL)"),
    QStringView(u"CREATE INDEX event_order ON event (owner, basket, id)"),
    QStringView(u"CREATE INDEX event_next ON event (state, owner, attempts, id)"),
    QStringView(u"CREATE TABLE version (version INTEGER NOT NULL)"),
    QStringView(u"INSERT INTO version VALUES (1)"),
};

// Asks the catalogue itself: functions like to_regclass() may answer from a cache, within the transaction that has
// waited for the lock.
bool exists(QueueConnection &connection)
{
    return connection
        .value(u"SELECT EXISTS (SELECT 1 FROM pg_tables WHERE schemaname = 'poshost_queue' AND tablename = 'version')")
        .toBool();
}

void make(QueueConnection &connection)
{
    QueueTransaction transaction(connection);
    connection.value(lock);
    if (exists(connection))
        return; // by another till meanwhile
    // Where an administrator has made it, the right to do so is not needed.
    if (!connection.value(u"SELECT EXISTS (SELECT 1 FROM pg_namespace WHERE nspname = 'poshost_queue')").toBool())
        connection.execute(u"CREATE SCHEMA poshost_queue");
    for (const QStringView sql : layout)
        connection.execute(sql);
    transaction.commit();
}

} // namespace

void postgresschema::ensure(QueueConnection &connection, QueueConnection::Missing missing)
{
    if (!exists(connection)) {
        if (missing == QueueConnection::Missing::IsRefused)
            throw queueerror::make(connection.name(),
                                   u"в базе данных нет очереди; проверьте настройку Queue:database"_s,
                                   u"there is no schema poshost_queue"_s);
        make(connection);
    }
    const int found = connection.value(u"SELECT version FROM version").toInt();
    if (found != current)
        throw queueerror::make(connection.name(), u"база записана более новой версией программы, обновите программу"_s,
                               u"version %1, known %2"_s.arg(QString::number(found), QString::number(current)));
}
