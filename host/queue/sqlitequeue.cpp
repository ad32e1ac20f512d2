// The queue's tables in SQLite, and leases as open file description locks.
#include "queuedatabase.h"

#include <core/privatefile.h>
#include <database/databaseerror.h>
#include <database/sqliteconnection.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <array>
#include <cerrno>

using namespace Qt::Literals::StringLiterals;

namespace {

// AUTOINCREMENT: an id is never reused, so the order of ids is the order of pushes for good. What differs most
// comes first in an index: SQLite compares the first column faster than the others.
constexpr std::array<QStringView, 9> queueTables = {
    u"CREATE TABLE event (id INTEGER PRIMARY KEY AUTOINCREMENT, owner TEXT NOT NULL, basket TEXT NOT NULL, "
    u"state TEXT NOT NULL, attempts INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL, rejected INTEGER, "
    u"last_error TEXT, event TEXT NOT NULL)",
    u"CREATE INDEX event_order ON event (basket, owner, id)",
    u"CREATE INDEX event_dead ON event (basket, owner, id) WHERE state = 'dead'",
    // Apart from the event, whose text SQLite would rewrite with each change.
    u"CREATE TABLE head (id INTEGER PRIMARY KEY, owner TEXT NOT NULL, next_attempt INTEGER NOT NULL)",
    u"CREATE INDEX head_due ON head (owner, next_attempt, id)",
    u"CREATE TABLE claim (id INTEGER PRIMARY KEY, lease INTEGER NOT NULL)",
    u"CREATE TABLE discarded (id INTEGER PRIMARY KEY, owner TEXT NOT NULL, basket TEXT NOT NULL, "
    u"attempts INTEGER NOT NULL, created INTEGER NOT NULL, last_error TEXT, rejected INTEGER, "
    u"discarded INTEGER NOT NULL, discard_reason TEXT NOT NULL, event TEXT NOT NULL)",
    u"CREATE INDEX discarded_order ON discarded (basket, owner, id)",
    u"CREATE TABLE summary AS SELECT 0 AS id, 0 AS waiting, 0 AS blocked, NULL AS last_success, NULL AS last_error, "
    u"NULL AS last_error_time",
};

// Checkpoints are the drain's work; if none is running, pushes checkpoint at 64 MiB.
constexpr SqliteSchema queueSchema{
    u"Очередь запросов", u"Queue:database и Host:dataFolder", 0x506f7351, 1, queueTables, 16384};

constexpr mode_t ownerOnly = 0600;

struct flock byteLock(qint64 position)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = position;
    lock.l_len = 1;
    return lock;
}

/// A lock on one byte of the file "<database>-lease", the byte with the lease's number. The kernel drops it with the
/// process and with this object. The locks belong to the open file (not to the process, as POSIX locks do), so drains
/// of one process keep each other out as well.
class FileLease : public QueueLease
{
public:
    explicit FileLease(const SqliteConnection &database)
        : m_title(database.title()), m_fileName(database.fileName() + u"-lease"_s)
    {
        m_descriptor =
            ::open(QFile::encodeName(m_fileName).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerOnly);
        if (m_descriptor < 0)
            throw error();
        giveToOwnerOf(database.fileName(), m_fileName); // as SQLite does with its files
        struct flock lock = byteLock(id());
        if (::fcntl(m_descriptor, F_OFD_SETLK, &lock) != 0) {
            const BasicException problem = error();
            ::close(m_descriptor);
            throw problem;
        }
    }
    ~FileLease() override { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(FileLease)

    void hold(DatabaseConnection &) override {}

    bool isHeldByOther(qint64 lease, DatabaseConnection &) const override
    {
        struct flock lock = byteLock(lease);
        if (::fcntl(m_descriptor, F_OFD_GETLK, &lock) != 0)
            throw error();
        return lock.l_type != F_UNLCK;
    }

private:
    BasicException error() const
    {
        return databaseerror::make(m_title,
                                   u"не удалось заблокировать файл «%1», проверьте права на папку"_s.arg(m_fileName),
                                   qt_error_string(errno));
    }

    QString m_title;
    QString m_fileName;
    int m_descriptor = -1;
};

class SqliteQueue : public QueueDatabase
{
public:
    SqliteQueue(const QString &fileName, DatabaseConnection::Commits commits, DatabaseConnection::IfMissing ifMissing)
        : m_connection(queueSchema, fileName, commits, ifMissing)
    {}

    DatabaseConnection &connection() override { return m_connection; }
    std::unique_ptr<QueueLease> newLease() const override { return std::make_unique<FileLease>(m_connection); }
    // One writer at a time:
    QStringView rowLock() const override { return {}; }
    void lockOrder(const QString &, const QString &) override {}
    void lockOrdersOf(const QueueLease &) override {}
    int summaryRow() const override { return 0; }
    QStringView eventValue() const override { return u"CAST(? AS TEXT)"; }
    QStringView eventColumn() const override { return u"CAST(e.event AS BLOB)"; }

private:
    SqliteConnection m_connection;
};

} // namespace

std::unique_ptr<QueueDatabase> QueueDatabase::openSqlite(const QueueSettings &settings,
                                                         DatabaseConnection::Commits commits,
                                                         DatabaseConnection::IfMissing ifMissing)
{
    return std::make_unique<SqliteQueue>(settings.database, commits, ifMissing);
}
