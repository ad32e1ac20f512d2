// SQLite's settings, and its error codes as texts for people.
#include "sqliteconnection.h"

#include "filelease.h"
#include "queueerror.h"
#include "sqliteschema.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFileInfo>

#include <array>
#include <chrono>
#include <thread>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::chrono::milliseconds busyTimeout{2000}; // the cashier waits for this
// To open: another program may be making the file, with some ten syncs of a disk that may be slow.
constexpr std::chrono::milliseconds openTimeout{10'000};
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

} // namespace

SqliteConnection::SqliteConnection(const QueueSettings &settings)
    : QueueConnection(u"QSQLITE"_s, settings.name()), m_file(settings.database)
{}

void SqliteConnection::open(Commits commits, Missing missing)
{
    if (missing == Missing::IsRefused && !QFileInfo::exists(m_file.name()))
        throw queueerror::make(name(), u"файла нет; проверьте настройки Queue:database и Host:dataFolder"_s,
                               u"ENOENT"_s);
    m_file.prepare();
    QSqlDatabase file = database();
    file.setDatabaseName(m_file.name());
    file.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=%1"_s.arg(openTimeout.count()));
    if (!file.open())
        fail(u"open", file.lastError());
    sqliteschema::refuseForeign(*this);
    configure(commits);
    sqliteschema::ensure(*this);
    execute(u"PRAGMA busy_timeout = %1"_s.arg(busyTimeout.count()));
}

// Makes the file ours: write-ahead log, how durable this connection's commits are, rights for its owner only.
void SqliteConnection::configure(Commits commits)
{
    m_file.tighten();
    switchToWriteAheadLog();
    if (commits == Commits::Synced) {
        execute(u"PRAGMA synchronous = FULL");
        execute(u"PRAGMA wal_autocheckpoint = %1"_s.arg(pagesBeforeCheckpoint));
    } else {
        execute(u"PRAGMA synchronous = NORMAL");
        execute(u"PRAGMA wal_autocheckpoint = 0");
        execute(u"PRAGMA temp_store = MEMORY"); // a run's events on their way out, otherwise a file for each run
    }
    expect(u"PRAGMA synchronous", commits == Commits::Synced ? u"2" : u"1");
}

// The busy time-out does not cover two connections that switch at the same moment: SQLite tells one of them at once
// that the file is busy.
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
    queueerror::logger()->error(
        u"Файл очереди запросов «%1» удалён или заменён во время работы, открываю его заново"_s.arg(name()));
    return false;
}

void SqliteConnection::checkpoint()
{
    value(u"PRAGMA wal_checkpoint(PASSIVE)");
}

std::unique_ptr<QueueLease> SqliteConnection::newLease() const
{
    return std::make_unique<FileLease>(m_file.name());
}

QString SqliteConnection::problemText(const QSqlError &error) const
{
    for (const Problem &problem : problems)
        if (problem.code == primaryCode(error))
            return problem.text.toString();
    return u"ошибка базы данных"_s;
}
