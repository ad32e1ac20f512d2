// Qt SQL with every result checked.
#include "databaseconnection.h"

#include "databaseerror.h"

#include <QtCore/QScopeGuard>

#include <atomic>
#include <mutex>
#include <system_error>

using namespace Qt::Literals::StringLiterals;

namespace {

QString nextName()
{
    static std::atomic<int> count = 0;
    return u"poshost.database.%1"_s.arg(++count);
}

} // namespace

DatabaseConnection::Registration::Registration(const QString &driver) : name(nextName())
{
    // Loading a driver for the first time is not thread-safe in Qt 6.4.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    QSqlDatabase::addDatabase(driver, name);
}

DatabaseConnection::Registration::~Registration()
{
    QSqlDatabase::removeDatabase(name);
}

DatabaseConnection::DatabaseConnection(const QString &driver, const QString &title)
    : m_title(title), m_registration(driver)
{
    if (!database().isValid())
        throw databaseerror::make(m_title, u"нет драйвера Qt SQL «%1», установите его"_s.arg(driver), u"addDatabase"_s);
}

void DatabaseConnection::watch(int socket, std::chrono::milliseconds limit)
{
    try {
        m_watchdog = std::make_unique<ConnectionWatchdog>(socket, limit);
    } catch (const std::system_error &error) {
        throw databaseerror::make(m_title, u"ошибка базы данных"_s,
                                  u"watchdog: %1"_s.arg(QString::fromLocal8Bit(error.what())));
    }
}

DatabaseConnection::Waiting::~Waiting()
{
    if (m_watchdog)
        m_watchdog->stop();
}

void DatabaseConnection::Waiting::restart()
{
    if (m_watchdog)
        m_watchdog->start();
}

int DatabaseConnection::change(QStringView sql, const QVariantList &values)
{
    const Waiting waiting(*this);
    QSqlQuery &query = start(sql, values);
    const int rows = query.numRowsAffected();
    query.finish();
    return rows;
}

void DatabaseConnection::read(QStringView sql, const QVariantList &values,
                              const std::function<void(const QSqlQuery &)> &row)
{
    Waiting waiting(*this);
    QSqlQuery &query = start(sql, values);
    // A query that is not finished keeps its snapshot, and the log growing.
    const auto finish = qScopeGuard([&query] { query.finish(); });
    while (query.next()) {
        row(query);
        waiting.restart();
    }
    if (query.lastError().isValid())
        fail(sql, query.lastError());
}

QVariant DatabaseConnection::value(QStringView sql, const QVariantList &values)
{
    QVariant result;
    read(sql, values, [&result](const QSqlQuery &row) {
        if (!result.isValid())
            result = row.value(0);
    });
    return result;
}

QSqlQuery &DatabaseConnection::start(QStringView sql, const QVariantList &values)
{
    auto entry = m_statements.find(sql);
    if (entry == m_statements.end()) {
        const QString text = sql.toString();
        QSqlQuery query(database());
        query.setForwardOnly(true);
        if (!query.prepare(text))
            fail(sql, query.lastError());
        entry = m_statements.emplace(text, std::move(query)).first;
    }
    QSqlQuery &query = entry->second;
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values.at(i));
    if (!query.exec())
        fail(sql, query.lastError());
    return query;
}

void DatabaseConnection::execute(QStringView sql)
{
    const Waiting waiting(*this);
    QSqlQuery query(database());
    if (!query.exec(sql.toString()))
        fail(sql, query.lastError());
}

void DatabaseConnection::expect(QStringView question, QStringView answer)
{
    const QString found = value(question).toString();
    if (found != answer)
        throw databaseerror::make(m_title, u"база данных не поддерживает надёжную запись"_s,
                                  u"%1: %2 instead of %3"_s.arg(question, found, answer));
}

void DatabaseConnection::fail(QStringView sql, const QSqlError &error) const
{
    const BasicException failure =
        databaseerror::make(m_title, problemText(error),
                            u"%1 %2: %3, %4"_s.arg(database().driverName(), error.nativeErrorCode(),
                                                   error.databaseText().simplified(), sql.toString().simplified()));
    if (isUnusable(error))
        throw UnusableDatabase(failure.text());
    throw failure;
}

DatabaseTransaction::DatabaseTransaction(DatabaseConnection &connection) : m_connection(connection)
{
    m_connection.begin();
}

DatabaseTransaction::~DatabaseTransaction()
{
    if (!m_open || !m_connection.database().isOpen()) // a server rolls back for a lost client
        return;
    const DatabaseConnection::Waiting waiting(m_connection);
    // Fails, harmlessly, where SQLite has rolled back by itself (a full disk).
    QSqlQuery query(m_connection.database());
    if (!query.exec(u"ROLLBACK"_s))
        databaseerror::logger()->debug(u"ROLLBACK: "_s + query.lastError().text());
}

void DatabaseTransaction::commit()
{
    m_connection.commit();
    m_open = false;
}
