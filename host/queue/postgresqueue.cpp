// PostgreSQL's settings, the queue's tables there, leases as advisory locks, and error codes as texts for people.
#include "postgresqueue.h"

#include <database/databaseerror.h>

#include <QtCore/QRegularExpression>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

// The cashier waits for these. In seconds: to connect; in milliseconds: for a network that has gone silent.
constexpr QStringView reachOptions = u"connect_timeout=2 tcp_user_timeout=5000 keepalives_idle=5 keepalives_interval=2";

// Milliseconds, but the server's keep-alives in seconds: by them it notices that a till has lost its power, whose drain
// then gives up its lease. A queue fills and empties faster than the server counts its rows, so the planner is kept
// from reading the whole table because it was empty a minute ago.
constexpr QStringView sessionOptions =
    u"options='-c search_path=poshost_queue -c synchronous_commit=%1 -c lock_timeout=1500 -c statement_timeout=2000 "
    u"-c idle_in_transaction_session_timeout=10000 -c tcp_keepalives_idle=10 -c tcp_keepalives_interval=5 "
    u"-c tcp_keepalives_count=3 -c enable_seqscan=off -c enable_bitmapscan=off -c enable_hashjoin=off "
    u"-c enable_mergejoin=off -c enable_sort=off -c jit=off'";

struct Problem
{
    QStringView state; ///< What SQLSTATE begins with.
    QStringView text;
};
constexpr std::array problems = {
    Problem{u"25006", u"сервер доступен только для чтения"},
    Problem{u"28", u"сервер не принял имя или пароль; проверьте Queue:user и Queue:password"},
    Problem{u"3D000", u"на сервере нет такой базы данных; проверьте Queue:database"},
    Problem{u"40P01", u"база данных занята, повторите позже"},
    Problem{u"42501", u"недостаточно прав в базе данных; проверьте права пользователя Queue:user"},
    Problem{u"42P01", u"недостаточно прав в базе данных; проверьте права пользователя Queue:user"}, // to the schema
    Problem{u"53100", u"нет места на диске сервера"},
    Problem{u"53300", u"на сервере слишком много подключений, повторите позже"},
    Problem{u"55P03", u"база данных занята, повторите позже"},
    Problem{u"57014", u"сервер не ответил вовремя, повторите позже"},
    Problem{u"57P", u"сервер остановлен или перезапускается, повторите позже"},
};

// Qt gives no SQLSTATE where no connection came about; the server's text is in its own language.
QString stateOf(const QSqlError &error)
{
    static const QRegularExpression noDatabase(uR"((database|база данных) ".*" (does not exist|не существует))"_s);
    static const QRegularExpression noLogin(
        u"authentication failed|no password supplied|проверку подлинности|role .* does not exist|роль .* не "
        u"существует"_s);
    if (error.type() != QSqlError::ConnectionError)
        return error.nativeErrorCode();
    const QString text = error.databaseText();
    return text.contains(noDatabase) ? u"3D000"_s : text.contains(noLogin) ? u"28000"_s : QString();
}

// Ids are drawn before the commit: they are in order of push for each till, not across tills.
constexpr std::array<QStringView, 6> tables = {
    u"CREATE TABLE event (id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY, owner TEXT NOT NULL, basket TEXT, "
    u"state TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, created BIGINT NOT NULL, "
    u"next_attempt BIGINT NOT NULL DEFAULT 0, rejected BIGINT, last_error TEXT, discarded BIGINT, "
    u"discard_reason TEXT, event TEXT NOT NULL)",
    u"CREATE INDEX event_order ON event (owner, basket, id)",
    u"CREATE INDEX event_next ON event (state, owner, attempts, id)",
    u"CREATE TABLE claim (id BIGINT PRIMARY KEY, lease BIGINT NOT NULL)",
    u"CREATE TABLE version (version INTEGER NOT NULL)",
    u"INSERT INTO version VALUES (1)",
};
constexpr int schemaVersion = 1;

// Tills that start together create the tables one after the other. Any number that is not another program's.
constexpr QStringView schemaLock = u"SELECT pg_advisory_xact_lock(7164013200591)";

class PostgresConnection final : public DatabaseConnection
{
public:
    PostgresConnection(const QueueSettings &settings, Commits commits, Missing missing);

    /// Asks the server: it may have closed the connection since its last use.
    bool isUsable() override;

protected:
    void begin() override { execute(u"BEGIN ISOLATION LEVEL READ COMMITTED"); }
    void commit() override { execute(u"COMMIT"); }
    QString problemText(const QSqlError &error) const override;

private:
    void ensureTables(Missing missing);
    void makeTables();
    int foundVersion();
};

PostgresConnection::PostgresConnection(const QueueSettings &settings, Commits commits, Missing missing)
    : DatabaseConnection(u"QPSQL"_s, u"Очередь запросов «%1»"_s.arg(settings.name()))
{
    const QString synced = commits == Commits::Synced ? u"on"_s : u"off"_s;
    QSqlDatabase server = database();
    server.setDatabaseName(settings.database);
    server.setHostName(settings.host);
    server.setPort(settings.port);
    server.setUserName(settings.user);
    server.setPassword(settings.password);
    // The last one counts of options that are given twice: the limits may be configured, the session not.
    server.setConnectOptions(u"%1 %2 %3"_s.arg(reachOptions, settings.options, sessionOptions.toString().arg(synced)));
    if (!server.open())
        fail(u"connect", server.lastError());
    expect(u"SELECT current_setting('synchronous_commit')", synced);
    expect(u"SELECT current_setting('fsync')", u"on");
    ensureTables(missing);
}

void PostgresConnection::ensureTables(Missing missing)
{
    if (foundVersion() == 0 && missing == Missing::IsRefused)
        throw databaseerror::make(title(), u"в базе данных нет очереди; проверьте настройку Queue:database"_s,
                                  u"there is no schema poshost_queue"_s);
    if (foundVersion() == 0)
        makeTables();
    const int found = foundVersion();
    if (found != schemaVersion)
        throw databaseerror::make(
            title(), u"база записана более новой версией программы, обновите программу"_s,
            u"version %1, known %2"_s.arg(QString::number(found), QString::number(schemaVersion)));
}

void PostgresConnection::makeTables()
{
    DatabaseTransaction transaction(*this);
    value(schemaLock);
    if (foundVersion() != 0) // another till was faster
        return;
    // If an administrator has created the schema, the right to do so is not needed.
    if (!value(u"SELECT EXISTS (SELECT 1 FROM pg_namespace WHERE nspname = 'poshost_queue')").toBool())
        execute(u"CREATE SCHEMA poshost_queue");
    for (const QStringView sql : tables)
        execute(sql);
    transaction.commit();
}

// 0: there are no tables. Asks the catalogue itself: functions like to_regclass() may answer from a cache, within the
// transaction that has waited for the lock.
int PostgresConnection::foundVersion()
{
    const bool exists = value(u"SELECT EXISTS (SELECT 1 FROM pg_tables WHERE schemaname = 'poshost_queue' "
                              u"AND tablename = 'version')")
                            .toBool();
    return exists ? value(u"SELECT version FROM version").toInt() : 0;
}

bool PostgresConnection::isUsable()
{
    QSqlQuery query(database());
    if (query.exec(u"SELECT 1"_s))
        return true;
    databaseerror::logger()->warn(u"%1: соединение с сервером потеряно, открываю его заново (%2)"_s.arg(
        title(), query.lastError().databaseText().simplified()));
    return false;
}

QString PostgresConnection::problemText(const QSqlError &error) const
{
    const QString state = stateOf(error);
    if (state.isEmpty())
        return u"сервер баз данных недоступен; проверьте его, сеть, Queue:host и Queue:port"_s;
    for (const Problem &problem : problems)
        if (state.startsWith(problem.state))
            return problem.text.toString();
    return u"ошибка базы данных"_s;
}

/// An advisory lock of the drain's own connection: the server drops it with the connection, and nothing can be claimed
/// on a connection that has lost it. A new connection takes the same number again: so a drain goes on with what it was
/// sending unless another one has taken that over.
class SessionLease : public QueueLease
{
public:
    // Waits where the server has not noticed yet that the previous connection is gone.
    void hold(DatabaseConnection &connection) override
    {
        if (m_heldIn == connection.identifier())
            return;
        connection.value(u"SELECT pg_advisory_lock(?)", {id()});
        m_heldIn = connection.identifier();
    }

    // Asks by taking it, until the end of the transaction.
    bool isHeldByOther(qint64 lease, DatabaseConnection &connection) const override
    {
        return !connection.value(u"SELECT pg_try_advisory_xact_lock(?)", {lease}).toBool();
    }

private:
    QString m_heldIn; // the connection's identifier
};

class PostgresQueue : public QueueDatabase
{
public:
    PostgresQueue(const QueueSettings &settings, DatabaseConnection::Commits commits,
                  DatabaseConnection::Missing missing)
        : m_connection(settings, commits, missing)
    {}

    DatabaseConnection &connection() override { return m_connection; }
    std::unique_ptr<QueueLease> newLease() const override { return std::make_unique<SessionLease>(); }
    QStringView rowLock() const override { return u"FOR UPDATE OF e SKIP LOCKED"; }
    QStringView eventColumn() const override { return u"e.event"; }

private:
    PostgresConnection m_connection;
};

} // namespace

std::unique_ptr<QueueDatabase> openPostgresQueue(const QueueSettings &settings, DatabaseConnection::Commits commits,
                                                 DatabaseConnection::Missing missing)
{
    return std::make_unique<PostgresQueue>(settings, commits, missing);
}
