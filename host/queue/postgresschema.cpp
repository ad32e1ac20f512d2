// The steps that lead from each version of the layout on a server to the next. A step that was released never changes
// again.
#include "postgresschema.h"

#include "queueerror.h"

#include <array>
#include <initializer_list>

using namespace Qt::Literals::StringLiterals;

namespace {

// Tills that start together make it one after the other. Any number that is not another program's.
constexpr QStringView lock = u"SELECT pg_advisory_xact_lock(7164013200591)";

// As in a file, but ids are drawn before the commit: they are in order of push for each till, not across tills.
constexpr std::initializer_list<QStringView> toVersion1 = {
    u"CREATE TABLE event (id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY, owner TEXT NOT NULL, basket TEXT, "
    u"state TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, created BIGINT NOT NULL, "
    u"next_attempt BIGINT NOT NULL DEFAULT 0, lease BIGINT, rejected BIGINT, last_error TEXT, discarded BIGINT, "
    u"discard_reason TEXT, event TEXT NOT NULL)",
    u"CREATE INDEX event_order ON event (owner, basket, id)",
    u"CREATE INDEX event_next ON event (state, owner, attempts, id)",
    u"CREATE TABLE version (version INTEGER NOT NULL)",
    u"INSERT INTO version VALUES (1)",
};

constexpr std::initializer_list<QStringView> toVersion2 = {
    u"CREATE TABLE claim (id BIGINT PRIMARY KEY, lease BIGINT NOT NULL)",
    u"INSERT INTO claim SELECT id, lease FROM event WHERE state = 'sending'",
    u"UPDATE event SET state = 'waiting', attempts = attempts - 1 WHERE state = 'sending'",
    u"ALTER TABLE event DROP COLUMN lease",
    u"UPDATE version SET version = 2",
};

constexpr std::array steps = {toVersion1, toVersion2};
constexpr int current = steps.size();

// Asks the catalogue itself: functions like to_regclass() may answer from a cache, within the transaction that has
// waited for the lock.
bool exists(QueueConnection &connection)
{
    return connection
        .value(u"SELECT EXISTS (SELECT 1 FROM pg_tables WHERE schemaname = 'poshost_queue' AND tablename = 'version')")
        .toBool();
}

int version(QueueConnection &connection)
{
    return exists(connection) ? connection.value(u"SELECT version FROM version").toInt() : 0;
}

void migrate(QueueConnection &connection)
{
    QueueTransaction transaction(connection);
    connection.value(lock);
    const int found = version(connection); // again: another till may have been at it since
    // Where an administrator has made it, the right to do so is not needed.
    if (found == 0 &&
        !connection.value(u"SELECT EXISTS (SELECT 1 FROM pg_namespace WHERE nspname = 'poshost_queue')").toBool())
        connection.execute(u"CREATE SCHEMA poshost_queue");
    for (std::size_t step = found; step < steps.size(); ++step)
        for (const QStringView sql : steps.at(step))
            connection.execute(sql);
    transaction.commit();
}

} // namespace

void postgresschema::ensure(QueueConnection &connection, QueueConnection::Missing missing)
{
    const int before = version(connection);
    if (before == 0 && missing == QueueConnection::Missing::IsRefused)
        throw queueerror::make(connection.name(), u"в базе данных нет очереди; проверьте настройку Queue:database"_s,
                               u"there is no schema poshost_queue"_s);
    if (before < current)
        migrate(connection);
    const int found = version(connection);
    if (found != current)
        throw queueerror::make(connection.name(), u"база записана более новой версией программы, обновите программу"_s,
                               u"version %1, known %2"_s.arg(QString::number(found), QString::number(current)));
}
