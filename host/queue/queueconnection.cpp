// Qt SQL with every result looked at, and SQLite's error codes as texts for people.
#include "queueconnection.h"

#include "queueerror.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QScopeGuard>

#include <array>
#include <atomic>
#include <mutex>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::chrono::milliseconds busyTimeout{2000}; // the cashier waits for this
constexpr std::chrono::milliseconds timeBetweenTries{10};
// Where no drain runs, pushes keep the log from growing without end; 4 KiB each.
constexpr int pagesBeforeCheckpoint = 16384;

struct Problem
{
    int code;
    QStringView text;
};
constexpr int busy = 5;
constexpr std::array problems = {
    Problem{busy, u"файл занят другой программой, повторите позже"},
    Problem{6, u"файл занят другой программой, повторите позже"},
    Problem{8, u"нет права записи в файл"},
    Problem{10, u"ошибка чтения или записи диска"},
    Problem{11, u"файл повреждён; сохраните его копию и обратитесь в поддержку"},
    Problem{13, u"нет места на диске"},
    Problem{14, u"не удалось открыть файл, проверьте путь и права"},
    Problem{26, u"файл не является базой данных очереди; проверьте настройку Queue:database"},
};

int primaryCode(const QSqlError &error)
{
    return error.nativeErrorCode().toInt() & 0xff;
}

QString problemText(const QSqlError &error)
{
    for (const Problem &problem : problems)
        if (problem.code == primaryCode(error))
            return problem.text.toString();
    return u"ошибка базы данных"_s;
}

} // namespace

QueueConnection::Registration::Registration()
{
    static std::atomic<int> count = 0;
    name = u"poshost.queue.%1"_s.arg(++count);
    // Loading a driver for the first time is not thread-safe in Qt 6.4.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
}

QueueConnection::Registration::~Registration()
{
    QSqlDatabase::removeDatabase(name);
}

QueueConnection::QueueConnection(const QString &fileName) : m_file(fileName)
{
    m_file.prepare();
    open();
}

void QueueConnection::configure(Commits commits)
{
    m_file.tighten();
    const bool synced = commits == Commits::Synced;
    const QString pages = QString::number(synced ? pagesBeforeCheckpoint : 0);
    switchToWriteAheadLog();
    set(u"synchronous"_s, synced ? u"FULL"_s : u"NORMAL"_s, synced ? u"2"_s : u"1"_s);
    set(u"wal_autocheckpoint"_s, pages, pages);
}

void QueueConnection::open()
{
    QSqlDatabase database = QSqlDatabase::database(m_registration.name, false);
    database.setDatabaseName(m_file.name());
    database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=%1"_s.arg(busyTimeout.count()));
    if (!database.open())
        fail(u"open", database.lastError());
}

// The busy time-out does not cover two connections that switch at the same moment: SQLite tells one of them at once
// that the file is busy.
void QueueConnection::switchToWriteAheadLog()
{
    QSqlQuery query(QSqlDatabase::database(m_registration.name, false));
    const QDeadlineTimer deadline(busyTimeout);
    while (!query.exec(u"PRAGMA journal_mode = WAL"_s)) {
        if (primaryCode(query.lastError()) != busy || deadline.hasExpired())
            fail(u"PRAGMA journal_mode = WAL", query.lastError());
        std::this_thread::sleep_for(timeBetweenTries);
    }
    query.finish();
    set(u"journal_mode"_s, u"WAL"_s, u"wal"_s);
}

// A setting that SQLite does not accept is no error to it: the answer has to be read.
void QueueConnection::set(const QString &setting, const QString &text, const QString &expected)
{
    const QString assignment = u"PRAGMA %1 = %2"_s.arg(setting, text);
    QSqlQuery query(QSqlDatabase::database(m_registration.name, false));
    if (!query.exec(assignment) || !query.exec(u"PRAGMA %1"_s.arg(setting)) || !query.next())
        fail(assignment, query.lastError());
    if (query.value(0).toString() != expected)
        throw queueerror::make(m_file.name(), u"база данных не поддерживает надёжную запись"_s,
                               u"%1: %2"_s.arg(assignment, query.value(0).toString()));
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
        QSqlQuery query(QSqlDatabase::database(m_registration.name, false));
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

void QueueConnection::fail(QStringView sql, const QSqlError &error) const
{
    throw queueerror::make(
        m_file.name(), problemText(error),
        u"SQLite %1: %2, %3"_s.arg(error.nativeErrorCode(), error.databaseText(), sql.toString().simplified()));
}

QueueTransaction::QueueTransaction(QueueConnection &connection) : m_connection(connection)
{
    m_connection.change(u"BEGIN IMMEDIATE");
}

QueueTransaction::~QueueTransaction()
{
    if (!m_open)
        return;
    // SQLite may have rolled back by itself, for instance on a full disk; ROLLBACK fails then, and that is well.
    QSqlQuery query(QSqlDatabase::database(m_connection.m_registration.name, false));
    if (!query.exec(u"ROLLBACK"_s))
        queueerror::logger()->debug(u"ROLLBACK: "_s + query.lastError().text());
}

void QueueTransaction::commit()
{
    m_connection.change(u"COMMIT");
    m_open = false;
}
