// The queue in a file: what is stored is on the disk, and a file that cannot be used is left alone.
#include "queuefixture.h"

#include <queue/queueadmin.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <QtCore/QFileInfo>
#include <QtCore/QScopeGuard>

#include <csignal>

namespace {

QByteArray contents(const QString &name)
{
    QFile file(name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QFile::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
}

/// While it lives, no file of this process can grow beyond `size` bytes.
class FullDisk
{
public:
    explicit FullDisk(qint64 size) : m_handler(::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_limit), 0);
        const rlimit small = {static_cast<rlim_t>(size), m_limit.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        ::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    sighandler_t m_handler;
    rlimit m_limit = {};
};

} // namespace

class QueueFileTest : public QueueTest
{
protected:
    void putFile(const QByteArray &bytes)
    {
        for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
            QFile::remove(file + suffix);
        write(file, bytes);
    }
};

TEST_F(QueueFileTest, CommitsReachTheDiskBeforePushReturns)
{
    push(u"a1"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA journal_mode"_s), u"wal"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA synchronous"_s), 2);
    EXPECT_GT(sqlInside(u"PRAGMA wal_autocheckpoint"_s).toInt(), 10'000);
}

TEST_F(QueueFileTest, FilesAreTheOwnersAlone)
{
    const mode_t mask = ::umask(0);
    const auto restoreMask = qScopeGuard([mask] { ::umask(mask); });
    push(u"a1"_s);
    ::chmod(QFile::encodeName(file).constData(), 0644); // as from a careless copy
    push(u"a2"_s);
    EXPECT_EQ(drain(), u"a1 a2"_s);
    const std::pair<QString, unsigned> cases[] = {{folder.filePath(u"data"_s), 0700},
                                                  {file, 0600},
                                                  {file + u"-wal"_s, 0600},
                                                  {file + u"-shm"_s, 0600},
                                                  {file + u"-lease"_s, 0600}};
    for (const auto &[name, mode] : cases) {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(name).constData(), &status), 0) << qPrintable(name);
        EXPECT_EQ(status.st_mode & ALLPERMS, mode) << qPrintable(name);
    }
}

TEST_F(QueueFileTest, UnusableFileIsRefusedByNameLeftAloneAndUsedAgainWhenItIsMended)
{
    expectsDamage = true;
    push(u"a1 b1"_s);
    sql(u"VACUUM"_s);
    sql(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    const QByteArray good = contents(file);
    const QString foreign = folder.filePath(u"foreign.db"_s);
    sql(foreign, u"CREATE TABLE theirs (x)"_s);
    const QString newer = folder.filePath(u"newer.db"_s);
    write(newer, good);
    sql(newer, u"PRAGMA user_version = 99"_s);
    const QString other = folder.filePath(u"other.db"_s);
    write(other, good);
    sql(other, u"PRAGMA application_id = 1"_s);
    const struct
    {
        const char *what;
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"not a database", QByteArray(8192, 'x'), u"не является базой данных"_s},
        {"cut off", good.first(good.size() / 2), u"повреждён"_s},
        {"of another program", contents(foreign), u"принадлежит другой программе"_s},
        {"ours, but no queue", contents(other), u"принадлежит другой программе"_s},
        {"of a newer version", contents(newer), u"более новой версией"_s},
    };
    for (const auto &entry : cases) {
        SCOPED_TRACE(entry.what);
        putFile(entry.bytes);
        EXPECT_TRUE(broker.problem().contains(file) && broker.problem().contains(entry.text))
            << qPrintable(broker.problem());
        EXPECT_THROW(push(u"a1"_s), BasicException);
        EXPECT_THROW(delivery.step(), BasicException);
        EXPECT_EQ(contents(file), entry.bytes);
        putFile(good);
        EXPECT_EQ(broker.problem(), u""_s);
        push(u"c1"_s);
    }
}

TEST_F(QueueFileTest, FolderThatCannotBeMadeIsRefused)
{
    write(folder.filePath(u"data"_s), "a file where the folder should be");
    EXPECT_THROW(push(u"a1"_s), BasicException);
    EXPECT_THROW(push(u"a1"_s, u""_s), BasicException) << "nobody to deliver it to";
}

// The log cannot grow any more, which shows at the commit and not before.
TEST_F(QueueFileTest, FullDiskLosesNothingAndIsOverWhenThereIsRoomAgain)
{
    push(u"a1"_s);
    {
        const FullDisk full(QFileInfo(file + u"-wal"_s).size());
        EXPECT_THROW(push(u"a2"_s), BasicException);
    }
    EXPECT_EQ(broker.problem(), u""_s);
    push(u"a3"_s);
    EXPECT_EQ(drain(), u"a1 a3"_s);
}

TEST_F(QueueFileTest, LockedDatabaseFailsThePushAndNoMore)
{
    push(u"a1"_s);
    sqlInside(u"PRAGMA busy_timeout = 0"_s);
    {
        QSqlDatabase locker = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"0"_s); // sorts before the queue's own
        locker.setDatabaseName(file);
        ASSERT_TRUE(locker.open());
        ASSERT_TRUE(QSqlQuery(locker).exec(u"BEGIN IMMEDIATE"_s));
        EXPECT_THROW(push(u"a2"_s), BasicException);
    }
    QSqlDatabase::removeDatabase(u"0"_s);
    push(u"a3"_s);
    EXPECT_EQ(drain(), u"a1 a3"_s);
}

TEST_F(QueueFileTest, FileThatIsTakenAwayIsNotWrittenToAnyMore)
{
    push(u"a1"_s);
    for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
        EXPECT_TRUE(QFile::rename(file + suffix, file + u".old"_s + suffix));
    push(u"b1"_s);
    EXPECT_EQ(drain(), u"b1"_s);
    EXPECT_EQ(sql(file + u".old"_s, u"SELECT COUNT(*) FROM event"_s), 1);
}

TEST_F(QueueFileTest, QueueThatDoesNotExistIsNotMade)
{
    QFile::rename(folder.filePath(u"data"_s), folder.filePath(u"elsewhere"_s));
    EXPECT_THROW(QueueAdmin(), BasicException);
    EXPECT_FALSE(QFile::exists(file));
}
