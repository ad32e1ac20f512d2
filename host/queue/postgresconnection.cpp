// PostgreSQL's settings, and its error codes as texts for people.
#include "postgresconnection.h"

#include "postgresschema.h"
#include "queueerror.h"
#include "sessionlease.h"

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

} // namespace

PostgresConnection::PostgresConnection(const QueueSettings &settings)
    : QueueConnection(u"QPSQL"_s, settings.name()), m_settings(settings)
{}

void PostgresConnection::open(Commits commits, Missing missing)
{
    const QString synced = commits == Commits::Synced ? u"on"_s : u"off"_s;
    QSqlDatabase server = database();
    server.setDatabaseName(m_settings.database);
    server.setHostName(m_settings.host);
    server.setPort(m_settings.port);
    server.setUserName(m_settings.user);
    server.setPassword(m_settings.password);
    // The last one counts of options that are given twice: the limits may be configured, the session not.
    server.setConnectOptions(
        u"%1 %2 %3"_s.arg(reachOptions, m_settings.options, sessionOptions.toString().arg(synced)));
    if (!server.open())
        fail(u"connect", server.lastError());
    expect(u"SELECT current_setting('synchronous_commit')", synced);
    expect(u"SELECT current_setting('fsync')", u"on");
    postgresschema::ensure(*this, missing);
}

bool PostgresConnection::isUsable()
{
    QSqlQuery query(database());
    if (query.exec(u"SELECT 1"_s))
        return true;
    queueerror::logger()->warn(u"Очередь запросов «%1»: соединение с сервером потеряно, открываю его заново (%2)"_s.arg(
        name(), query.lastError().databaseText().simplified()));
    return false;
}

std::unique_ptr<QueueLease> PostgresConnection::newLease() const
{
    return std::make_unique<SessionLease>();
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
