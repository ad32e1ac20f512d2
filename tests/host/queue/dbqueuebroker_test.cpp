// A push that returns is on the disk; a push that throws has changed nothing.
#include "queuefixture.h"

#include <queue/queueadmin.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <QtCore/QFileInfo>
#include <QtCore/QScopeGuard>

#include <csignal>
#include <thread>

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

using DBQueueBrokerTest = QueueTest;

TEST_F(DBQueueBrokerTest, CommitsReachTheDiskBeforePushReturns)
{
    push(u"a1"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA journal_mode"_s), u"wal"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA synchronous"_s), 2);
    EXPECT_GT(sqlInside(u"PRAGMA wal_autocheckpoint"_s).toInt(), 10'000);
}

TEST_F(DBQueueBrokerTest, FilesAreTheOwnersAlone)
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

TEST_F(DBQueueBrokerTest, OrderIsTheBasketOrElseTheKeyOrElseNone)
{
    const QJsonObject withBasket{{u"payload"_s, QJsonObject{{u"basket"_s, u"b-1"_s}}}};
    const QJsonObject without{{u"payload"_s, QJsonObject{{u"basket"_s, 7}}}};
    broker.push(u"kvo"_s, withBasket, u"key"_s);
    broker.push(u"kvo"_s, without, u"key"_s);
    broker.push(u"kvo"_s, without, {});
    QStringList orders;
    for (const QueueAdmin::Entry &entry : QueueAdmin().list())
        orders.append(entry.order);
    EXPECT_EQ(orders, (QStringList{u"b-1"_s, u"key"_s, u""_s}));
}

TEST_F(DBQueueBrokerTest, UnusableFileIsRefusedByNameAndLeftAlone)
{
    push(u"a1 b1"_s);
    sql(u"VACUUM"_s);
    sql(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    const QByteArray good = contents(file);
    const QString foreign = folder.filePath(u"foreign.db"_s);
    sql(foreign, u"CREATE TABLE theirs (x)"_s);
    const QString newer = folder.filePath(u"newer.db"_s);
    write(newer, good);
    sql(newer, u"PRAGMA user_version = 99"_s);
    const struct
    {
        const char *what;
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"not a database", QByteArray(8192, 'x'), u"не является базой данных"_s},
        {"cut off", good.first(good.size() / 2), u"повреждён"_s},
        {"of another program", contents(foreign), u"принадлежит другой программе"_s},
        {"of a newer version", contents(newer), u"более новой версией"_s},
    };
    for (const auto &entry : cases) {
        SCOPED_TRACE(entry.what);
        for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
            QFile::remove(file + suffix);
        write(file, entry.bytes);
        try {
            push(u"a1"_s);
            ADD_FAILURE() << "stored";
        } catch (const BasicException &error) {
            EXPECT_TRUE(error.text().ru().contains(file)) << error.what();
            EXPECT_TRUE(error.text().ru().contains(entry.text)) << error.what();
        }
        EXPECT_THROW(delivery.step(), BasicException);
        EXPECT_EQ(contents(file), entry.bytes);
    }
}

TEST_F(DBQueueBrokerTest, FolderThatCannotBeMadeIsRefused)
{
    write(folder.filePath(u"data"_s), "a file where the folder should be");
    EXPECT_THROW(push(u"a1"_s), BasicException);
    EXPECT_THROW(push(u"a1"_s, u""_s), BasicException) << "nobody to deliver it to";
}

// The log cannot grow any more, which shows at the commit and not before.
TEST_F(DBQueueBrokerTest, FullDiskLosesNothingAndIsOverWhenThereIsRoomAgain)
{
    push(u"a1"_s);
    {
        const FullDisk full(QFileInfo(file + u"-wal"_s).size());
        EXPECT_THROW(push(u"a2"_s), BasicException);
    }
    push(u"a3"_s);
    EXPECT_EQ(drain(), u"a1 a3"_s);
}

TEST_F(DBQueueBrokerTest, LockedDatabaseFailsThePushAndNoMore)
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

TEST_F(DBQueueBrokerTest, FileThatIsTakenAwayIsNotWrittenToAnyMore)
{
    push(u"a1"_s);
    for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
        EXPECT_TRUE(QFile::rename(file + suffix, file + u".old"_s + suffix));
    push(u"b1"_s);
    EXPECT_EQ(drain(), u"b1"_s);
    EXPECT_EQ(sql(file + u".old"_s, u"SELECT COUNT(*) FROM event"_s), 1);
}

TEST_F(DBQueueBrokerTest, ProgramsThatStartTogetherMakeOneQueue)
{
    std::vector<std::thread> tills;
    for (int till = 0; till < 6; ++till)
        tills.emplace_back([] { EXPECT_NO_THROW(DBQueueBroker().push(u"kvo"_s, eventNamed(u"a1"_s), {})); });
    for (std::thread &till : tills)
        till.join();
    EXPECT_EQ(broker.status().waiting, 6);
    EXPECT_TRUE(broker.status().oldest.isValid());
}
