// SQLite's settings, and its error codes as texts for people.
#include "sqliteconnection.h"

#include "databaseerror.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFileInfo>

#include <array>
#include <chrono>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::chrono::milliseconds busyTimeout{2000}; // the cashier waits for this
// For opening: another program may be creating the file, with some ten syncs on a disk that may be slow.
constexpr std::chrono::milliseconds openTimeout{10'000};
constexpr std::chrono::milliseconds timeBetweenTries{10};

struct Problem
{
    int code;
    QStringView text;
};
constexpr int genericError = 1;
constexpr int busy = 5;
constexpr int locked = 6;
constexpr int readOnly = 8;
constexpr int ioError = 10;
constexpr int corrupt = 11;
constexpr int full = 13;
constexpr int cannotOpen = 14;
constexpr int notADatabase = 26;
constexpr int noRoomForLogIndex = 4874; // to SQLite an error of reading or writing
constexpr std::array problems = {
    Problem{busy, u"файл занят другой программой, повторите позже"},
    Problem{locked, u"файл занят другой программой, повторите позже"},
    Problem{readOnly, u"нет права записи в файл"},
    Problem{ioError, u"ошибка чтения или записи диска"},
    Problem{corrupt, u"файл повреждён; сохраните его копию и обратитесь в поддержку"},
    Problem{full, u"нет места на диске"},
    Problem{cannotOpen, u"не удалось открыть файл, проверьте путь и права"},
    Problem{notADatabase, u"файл не является базой данных; проверьте %1"},
};

// The file is of our version, so a statement that misses a table or a column means that somebody has changed it.
bool missesSchema(const QSqlError &error)
{
    const QString text = error.databaseText();
    return text.startsWith("no such table"_L1) || text.startsWith("no such column"_L1) ||
           text.contains("has no column named"_L1);
}

int primaryCode(const QSqlError &error)
{
    const int code = error.nativeErrorCode().toInt();
    if (code == noRoomForLogIndex)
        return full;
    return code == genericError && missesSchema(error) ? corrupt : code & 0xff;
}

} // namespace

SqliteConnection::SqliteConnection(const SqliteSchema &schema, const QString &fileName, Commits commits,
                                   IfMissing ifMissing)
    : DatabaseConnection(u"QSQLITE"_s, DatabaseFile(schema.what, fileName).title()),
      m_schema(schema),
      m_file(schema.what, fileName)
{
    if (ifMissing == IfMissing::Fail && !QFileInfo::exists(m_file.name()))
        throw MissingDatabase(u"%1: файла нет; проверьте %2"_s.arg(title(), m_schema.settings));
    m_file.prepare();
    if (m_file.isSingleByte())
        fail(u"open", QSqlError({}, u"a single byte"_s, QSqlError::ConnectionError, QString::number(notADatabase)));
    QSqlDatabase file = database();
    file.setDatabaseName(m_file.name());
    file.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=%1"_s.arg(openTimeout.count()));
    if (!file.open())
        fail(u"open", file.lastError());
    const bool isNew = foundVersion() == 0;
    configure(commits);
    if (isNew)
        makeTables();
    execute(u"PRAGMA busy_timeout = %1"_s.arg(busyTimeout.count()));
}

// 0: there is nothing in the file yet.
int SqliteConnection::foundVersion()
{
    int version = 0;
    bool isForeign = false;
    // In one statement, so that all of it is from one moment: another process may be making the tables.
    read(u"SELECT user_version, application_id, EXISTS (SELECT 1 FROM sqlite_master) "
         u"FROM pragma_user_version, pragma_application_id",
         {}, [&](const QSqlQuery &row) {
             version = row.value(0).toInt();
             isForeign = row.value(1).toInt() != m_schema.applicationId && (version != 0 || row.value(2).toBool());
         });
    if (isForeign)
        throw UnusableDatabase(
            databaseerror::make(title(), u"файл принадлежит другой программе; проверьте %1"_s.arg(m_schema.settings),
                                u"another application_id, user_version %1"_s.arg(version))
                .text());
    if (version != 0 && version != m_schema.version)
        throw UnusableDatabase(
            databaseerror::make(
                title(), u"файл записан более новой версией программы, обновите программу"_s,
                u"user_version %1, known %2"_s.arg(QString::number(version), QString::number(m_schema.version)))
                .text());
    return version;
}

// Everything or nothing.
void SqliteConnection::makeTables()
{
    DatabaseTransaction transaction(*this);
    if (foundVersion() != 0) // another process was faster
        return;
    for (const QStringView sql : m_schema.statements)
        execute(sql);
    execute(u"PRAGMA application_id = %1"_s.arg(m_schema.applicationId));
    execute(u"PRAGMA user_version = %1"_s.arg(m_schema.version));
    transaction.commit();
}

// Makes the file ours: write-ahead log, how durable this connection's commits are, rights for its owner only.
void SqliteConnection::configure(Commits commits)
{
    m_file.tighten();
    switchToWriteAheadLog();
    if (commits == Commits::Synced) {
        execute(u"PRAGMA synchronous = FULL");
        execute(u"PRAGMA cache_size = -512"); // KiB: a till's memory does not grow with its journal
        if (m_schema.pagesBeforeCheckpoint)
            execute(u"PRAGMA wal_autocheckpoint = %1"_s.arg(*m_schema.pagesBeforeCheckpoint));
    } else {
        execute(u"PRAGMA synchronous = NORMAL");
        execute(u"PRAGMA wal_autocheckpoint = 0");
        execute(u"PRAGMA temp_store = MEMORY"); // otherwise deleting a batch makes a temporary file
    }
    expect(u"PRAGMA synchronous", commits == Commits::Synced ? u"2" : u"1");
}

// The busy time-out does not cover two connections that switch at the same moment: one of them fails at once.
void SqliteConnection::switchToWriteAheadLog()
{
    constexpr QStringView sql = u"PRAGMA journal_mode = WAL";
    QSqlQuery query(database());
    const QDeadlineTimer deadline(openTimeout);
    while (!query.exec(sql.toString())) {
        if (primaryCode(query.lastError()) != busy || deadline.hasExpired())
            fail(sql, query.lastError());
        std::this_thread::sleep_for(timeBetweenTries);
    }
    query.finish();
    expect(u"PRAGMA journal_mode", u"wal");
}

bool SqliteConnection::isUsable()
{
    if (!m_file.isReplaced())
        return true;
    databaseerror::logger()->error(u"%1: файл удалён или заменён во время работы, открываю его заново"_s.arg(title()));
    return false;
}

void SqliteConnection::checkpoint()
{
    value(u"PRAGMA wal_checkpoint(PASSIVE)");
}

QString SqliteConnection::problemText(const QSqlError &error) const
{
    for (const Problem &problem : problems)
        if (problem.code == primaryCode(error))
            return problem.text.toString().replace(u"%1"_s, m_schema.settings.toString());
    return u"ошибка базы данных"_s;
}

bool SqliteConnection::isUnusable(const QSqlError &error) const
{
    return primaryCode(error) == corrupt || primaryCode(error) == notADatabase;
}
