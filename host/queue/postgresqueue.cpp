// PostgreSQL's settings, the queue's tables there, leases as advisory locks, and error codes as texts for people.
#include "queuedatabase.h"

#include <database/databaseerror.h>

#include <QtCore/QLibrary>
#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtSql/QSqlDriver>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

// The cashier waits for these: to connect, in seconds; for a network that has gone silent, in milliseconds.
constexpr QStringView reachOptions = u"connect_timeout=2 tcp_user_timeout=5000 keepalives_idle=5 keepalives_interval=2";

// In milliseconds, but the server's keep-alives in seconds: they tell it that a till has lost its power, which frees
// its drain's lease. A queue fills and empties faster than the server counts its rows, so the planner is kept from
// reading the whole table because it was empty a minute ago.
constexpr QStringView sessionOptions =
    u"options='-c search_path=poshost_queue -c synchronous_commit=%1 -c lock_timeout=1500 -c statement_timeout=2000 "
    u"-c idle_in_transaction_session_timeout=10000 -c tcp_keepalives_idle=10 -c tcp_keepalives_interval=5 "
    u"-c tcp_keepalives_count=3 -c enable_seqscan=off -c enable_bitmapscan=off -c enable_hashjoin=off "
    u"-c enable_mergejoin=off -c enable_sort=off -c jit=off -c client_min_messages=error'";

// For a server process that hangs, and keeps no limits of its own then. Longer than those.
constexpr std::chrono::seconds answerLimit{5};
constexpr std::chrono::seconds tablesLimit{12};

// libpq belongs to Qt's driver: neither the build nor a till with a file needs it.
int socketOf(const QSqlDriver &driver)
{
    using PQsocket = int (*)(const void *connection);
    static const auto function = reinterpret_cast<PQsocket>(QLibrary::resolve(u"pq"_s, 5, "PQsocket"));
    const QVariant handle = driver.handle();
    return function == nullptr ? -1 : function(*static_cast<void *const *>(handle.constData()));
}

struct ServerProblem
{
    QStringView state; ///< What SQLSTATE begins with.
    QStringView text;
};
constexpr std::array serverProblems = {
    ServerProblem{u"08000", u"такие параметры подключения невозможны; проверьте Queue:options и Queue:port"},
    ServerProblem{u"08001", u"нет защищённого соединения с сервером; проверьте sslmode и сертификаты в Queue:options"},
    ServerProblem{u"25006", u"сервер доступен только для чтения"},
    ServerProblem{u"28", u"сервер не принял имя или пароль; проверьте Queue:user и Queue:password"},
    ServerProblem{u"3D000", u"на сервере нет такой базы данных; проверьте Queue:database"},
    ServerProblem{u"40P01", u"база данных занята, повторите позже"},
    ServerProblem{u"42501", u"недостаточно прав в базе данных; проверьте права пользователя Queue:user"},
    ServerProblem{u"42P01",
                  u"недостаточно прав в базе данных; проверьте права пользователя Queue:user"}, // to the schema
    ServerProblem{u"53100", u"нет места на диске сервера"},
    ServerProblem{u"53300", u"на сервере слишком много подключений, повторите позже"},
    ServerProblem{u"55P03", u"база данных занята, повторите позже"},
    ServerProblem{u"57014", u"сервер не ответил вовремя, повторите позже"},
    ServerProblem{u"57P", u"сервер остановлен или перезапускается, повторите позже"},
};

// Qt gives no SQLSTATE if connecting failed, and the server's text is in its own language.
QString stateOf(const QSqlError &error)
{
    static const std::pair<QRegularExpression, QString> refusals[] = {
        {QRegularExpression(uR"((database|база данных) ".*" (does not exist|не существует))"_s), u"3D000"_s},
        {QRegularExpression(uR"(permission denied for database|доступ к базе .* запрещён)"_s), u"42501"_s},
        {QRegularExpression(
             uR"(authentication failed|no password supplied|проверку подлинности|pg_hba\.conf|)"
             uR"((role|роль) .* (does not exist|не существует)|not permitted to log in|вход запрещён)"_s),
         u"28000"_s},
        {QRegularExpression(uR"(too many (connections|clients)|connection slots|)"
                            uR"(слишком много (подключений|клиентов)|слоты подключений)"_s),
         u"53300"_s},
        {QRegularExpression(uR"(the database system is |система (баз данных|БД) )"_s), u"57P03"_s},
        {QRegularExpression(uR"(sslmode|certificate|сертификат|(SSL error|ошибка SSL):|)"
                            uR"(not support SSL|не поддерживает SSL)"_s),
         u"08001"_s},
        {QRegularExpression(uR"(connection (option|info string)|параметр.* соединения|строке соединения|)"
                            uR"((invalid|неверн).* (value|port|значение|порт))"_s),
         u"08000"_s},
    };
    if (error.type() != QSqlError::ConnectionError)
        return error.nativeErrorCode();
    const QString text = error.databaseText();
    const auto *const refusal =
        std::ranges::find_if(refusals, [&text](const auto &known) { return text.contains(known.first); });
    return refusal == std::end(refusals) ? QString() : refusal->second;
}

// Ids are drawn before the commit: they are in order of push for each till, not across tills.
constexpr std::array<QStringView, 10> serverTables = {
    u"CREATE TABLE event (id BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY, owner TEXT NOT NULL, "
    u"basket TEXT NOT NULL, state TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, created BIGINT NOT NULL, "
    u"rejected BIGINT, last_error TEXT, event TEXT NOT NULL)",
    u"CREATE INDEX event_order ON event (basket, owner, id)",
    u"CREATE INDEX event_dead ON event (basket, owner, id) WHERE state = 'dead'",
    u"CREATE TABLE head (id BIGINT PRIMARY KEY, owner TEXT NOT NULL, next_attempt BIGINT NOT NULL)",
    u"CREATE INDEX head_due ON head (owner, next_attempt, id)",
    u"CREATE TABLE claim (id BIGINT PRIMARY KEY, lease BIGINT NOT NULL)",
    u"CREATE TABLE discarded (id BIGINT PRIMARY KEY, owner TEXT NOT NULL, basket TEXT NOT NULL, "
    u"attempts INTEGER NOT NULL, created BIGINT NOT NULL, last_error TEXT, rejected BIGINT, "
    u"discarded BIGINT NOT NULL, discard_reason TEXT NOT NULL, event TEXT NOT NULL)",
    u"CREATE INDEX discarded_order ON discarded (basket, owner, id)",
    u"CREATE TABLE version (version INTEGER NOT NULL)",
    u"INSERT INTO version VALUES (1)",
};
constexpr int summaryRows = 64;
constexpr QStringView summaryTable =
    u"CREATE TABLE summary AS SELECT id, 0::BIGINT AS waiting, 0::BIGINT AS blocked, NULL::BIGINT AS last_success, "
    u"NULL::TEXT AS last_error, NULL::BIGINT AS last_error_time FROM generate_series(0, %1) AS id";
constexpr int schemaVersion = 1;

// Tills that start together create the tables one after the other. Any number that is not another program's.
constexpr QStringView schemaLock = u"SELECT pg_advisory_xact_lock(7164013200591)";

class PostgresConnection final : public DatabaseConnection
{
public:
    PostgresConnection(const QueueSettings &settings, Commits commits, IfMissing ifMissing);

    /// Asks the server: it may have closed the connection since its last use.
    bool isUsable() override;

protected:
    void begin() override { execute(u"BEGIN ISOLATION LEVEL READ COMMITTED"); }
    void commit() override { execute(u"COMMIT"); }
    QString problemText(const QSqlError &error) const override;

private:
    void ensureTables(IfMissing ifMissing);
    [[noreturn]] void refuseMissing();
    void makeTables();
    int foundVersion();
    void limitWaiting(std::chrono::seconds limit) { watch(socketOf(*database().driver()), limit); }
};

PostgresConnection::PostgresConnection(const QueueSettings &settings, Commits commits, IfMissing ifMissing)
    : DatabaseConnection(u"QPSQL"_s, u"Очередь запросов «%1»"_s.arg(settings.name()))
{
    const QString synced = commits == Commits::Synced ? u"on"_s : u"off"_s;
    QSqlDatabase server = database();
    server.setDatabaseName(settings.database);
    server.setHostName(settings.host);
    server.setPort(settings.port);
    server.setUserName(settings.user);
    server.setPassword(settings.password);
    // When an option is given twice, the last one wins: the configuration may override reachOptions, but not the
    // session's options.
    server.setConnectOptions(u"%1 %2 %3"_s.arg(reachOptions, settings.options, sessionOptions.toString().arg(synced)));
    if (!server.open())
        fail(u"connect", server.lastError());
    limitWaiting(answerLimit);
    expect(u"SELECT current_setting('synchronous_commit')", synced);
    expect(u"SELECT current_setting('fsync')", u"on");
    ensureTables(ifMissing);
}

void PostgresConnection::ensureTables(IfMissing ifMissing)
{
    if (foundVersion() == 0 && ifMissing == IfMissing::Fail)
        refuseMissing();
    if (foundVersion() == 0) {
        limitWaiting(tablesLimit);
        makeTables();
        limitWaiting(answerLimit);
    }
    const int found = foundVersion();
    if (found != schemaVersion)
        throw databaseerror::make(
            title(), u"база записана более новой версией программы, обновите программу"_s,
            u"version %1, known %2"_s.arg(QString::number(found), QString::number(schemaVersion)));
}

void PostgresConnection::refuseMissing()
{
    const bool canBeMade =
        value(u"SELECT COALESCE((SELECT has_schema_privilege(oid, 'CREATE') AND has_schema_privilege(oid, 'USAGE') "
              u"FROM pg_namespace WHERE nspname = 'poshost_queue'), "
              u"has_database_privilege(current_database(), 'CREATE'))")
            .toBool();
    if (!canBeMade)
        fail(u"CREATE SCHEMA", QSqlError({}, u"no right"_s, QSqlError::StatementError, u"42501"_s));
    throw MissingDatabase(u"%1: в базе данных нет очереди; проверьте настройку Queue:database"_s.arg(title()));
}

void PostgresConnection::makeTables()
{
    DatabaseTransaction transaction(*this);
    // In milliseconds: another till may be creating the tables, on a slow server. The session's limits are too short.
    execute(u"SET LOCAL lock_timeout = 10000");
    execute(u"SET LOCAL statement_timeout = 10000");
    value(schemaLock);
    if (foundVersion() != 0) // another till was faster
        return;
    // If an administrator has created the schema, the right to do so is not needed.
    if (!value(u"SELECT EXISTS (SELECT 1 FROM pg_namespace WHERE nspname = 'poshost_queue')").toBool())
        execute(u"CREATE SCHEMA poshost_queue");
    for (const QStringView sql : serverTables)
        execute(sql);
    execute(summaryTable.toString().arg(summaryRows - 1));
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
    const Waiting waiting(*this);
    QSqlQuery query(database());
    if (query.exec(u"SELECT 1"_s))
        return true;
    databaseerror::logger()->warn(u"%1: соединение с сервером потеряно, открываю его заново (%2)"_s.arg(
        title(), hasTimedOut() ? u"no answer in time"_s : query.lastError().databaseText().simplified()));
    return false;
}

QString PostgresConnection::problemText(const QSqlError &error) const
{
    const QString state = hasTimedOut() ? u"57014"_s : stateOf(error);
    if (state.isEmpty())
        return u"сервер баз данных недоступен; проверьте его, сеть, Queue:host и Queue:port"_s;
    for (const ServerProblem &problem : serverProblems)
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
    // Waits while the server has not noticed yet that the previous connection is gone.
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
                  DatabaseConnection::IfMissing ifMissing)
        : m_connection(settings, commits, ifMissing)
    {}

    DatabaseConnection &connection() override { return m_connection; }
    std::unique_ptr<QueueLease> newLease() const override { return std::make_unique<SessionLease>(); }
    QStringView rowLock() const override { return u"FOR UPDATE OF e SKIP LOCKED"; }
    void lockOrder(const QString &owner, const QString &basket) override
    {
        m_connection.value(u"SELECT pg_advisory_xact_lock(hashtextextended(?, hashtextextended(?, 0)))",
                           {basket, owner});
    }
    void lockOrdersOf(const QueueLease &lease) override
    {
        m_connection.value(u"SELECT COUNT(pg_advisory_xact_lock(hashtextextended(e.basket, "
                           u"hashtextextended(e.owner, 0)))::TEXT) FROM claim c JOIN event e ON e.id = c.id "
                           u"WHERE c.lease = ?",
                           {lease.id()});
    }
    int summaryRow() const override { return m_summaryRow; }
    QStringView eventValue() const override { return u"convert_from(?, 'UTF8')"; }
    QStringView eventColumn() const override { return u"e.event"; }

private:
    PostgresConnection m_connection;
    int m_summaryRow = QRandomGenerator::global()->bounded(summaryRows);
};

} // namespace

std::unique_ptr<QueueDatabase> QueueDatabase::openPostgres(const QueueSettings &settings,
                                                           DatabaseConnection::Commits commits,
                                                           DatabaseConnection::IfMissing ifMissing)
{
    return std::make_unique<PostgresQueue>(settings, commits, ifMissing);
}
