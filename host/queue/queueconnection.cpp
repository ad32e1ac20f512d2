// Qt SQL with every result looked at.
#include "queueconnection.h"

#include "postgresconnection.h"
#include "queueerror.h"
#include "sqliteconnection.h"

#include <QtCore/QScopeGuard>

#include <atomic>
#include <mutex>

using namespace Qt::Literals::StringLiterals;

QueueConnection::Registration::Registration(const QString &driver)
{
    static std::atomic<int> count = 0;
    name = u"poshost.queue.%1"_s.arg(++count);
    // Loading a driver for the first time is not thread-safe in Qt 6.4.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    QSqlDatabase::addDatabase(driver, name);
}

QueueConnection::Registration::~Registration()
{
    QSqlDatabase::removeDatabase(name);
}

QueueConnection::QueueConnection(const QString &driver, const QString &name) : m_name(name), m_registration(driver)
{
    if (!database().isValid())
        throw queueerror::make(m_name, u"нет драйвера Qt SQL «%1», установите его"_s.arg(driver), u"addDatabase"_s);
}

std::unique_ptr<QueueConnection> QueueConnection::open(const QueueSettings &settings, Commits commits, Missing missing)
{
    std::unique_ptr<QueueConnection> connection;
    if (settings.driver == QueueSettings::Driver::Sqlite)
        connection = std::make_unique<SqliteConnection>(settings);
    else
        connection = std::make_unique<PostgresConnection>(settings);
    connection->open(commits, missing);
    return connection;
}

int QueueConnection::change(QStringView sql, const QVariantList &values)
{
    QSqlQuery &query = start(sql, values);
    const int rows = query.numRowsAffected();
    query.finish();
    return rows;
}

void QueueConnection::read(QStringView sql, const QVariantList &values,
                           const std::function<void(const QSqlQuery &)> &row)
{
    QSqlQuery &query = start(sql, values);
    // A query that is not finished holds its snapshot, and with it the log, for ever.
    const auto finish = qScopeGuard([&query] { query.finish(); });
    while (query.next())
        row(query);
    if (query.lastError().isValid())
        fail(sql, query.lastError());
}

QVariant QueueConnection::value(QStringView sql, const QVariantList &values)
{
    QVariant result;
    read(sql, values, [&result](const QSqlQuery &row) {
        if (!result.isValid())
            result = row.value(0);
    });
    return result;
}

QSqlQuery &QueueConnection::start(QStringView sql, const QVariantList &values)
{
    auto entry = m_statements.find(sql);
    if (entry == m_statements.end()) {
        QSqlQuery query(database());
        query.setForwardOnly(true);
        if (!query.prepare(sql.toString()))
            fail(sql, query.lastError());
        entry = m_statements.emplace(sql, std::move(query)).first;
    }
    QSqlQuery &query = entry->second;
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values.at(i));
    if (!query.exec())
        fail(sql, query.lastError());
    return query;
}

void QueueConnection::execute(QStringView sql)
{
    QSqlQuery query(database());
    if (!query.exec(sql.toString()))
        fail(sql, query.lastError());
}

void QueueConnection::expect(QStringView question, QStringView answer)
{
    const QString found = value(question).toString();
    if (found != answer)
        throw queueerror::make(m_name, u"база данных не поддерживает надёжную запись"_s,
                               u"%1: %2 instead of %3"_s.arg(question, found, answer));
}

void QueueConnection::fail(QStringView sql, const QSqlError &error) const
{
    throw queueerror::make(m_name, problemText(error),
                           u"%1 %2: %3, %4"_s.arg(database().driverName(), error.nativeErrorCode(),
                                                  error.databaseText().simplified(), sql.toString().simplified()));
}

QueueTransaction::QueueTransaction(QueueConnection &connection) : m_connection(connection)
{
    m_connection.begin();
}

QueueTransaction::~QueueTransaction()
{
    if (!m_open)
        return;
    // SQLite may have rolled back by itself, for instance on a full disk, and a connection may be gone; ROLLBACK fails
    // then, and that is well.
    QSqlQuery query(m_connection.database());
    if (!query.exec(u"ROLLBACK"_s))
        queueerror::logger()->debug(u"ROLLBACK: "_s + query.lastError().text());
}

void QueueTransaction::commit()
{
    m_connection.commit();
    m_open = false;
}
