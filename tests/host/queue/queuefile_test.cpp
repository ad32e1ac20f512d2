// The queue in a file: what is stored is on the disk, and a file that cannot be used is left alone.
#include "queuefixture.h"
#include "tests/support/fulldisk.h"
#include "tests/support/refusal.h"

#include <queue/queueadmin.h>
#include <queue/queuedrain.h>

#include <sys/stat.h>

struct QueueFileTest : QueueTest
{
    void removeFiles()
    {
        for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
            QFile::remove(file + suffix);
    }

    void putFile(const QByteArray &bytes)
    {
        removeFiles();
        writeFile(file, bytes);
    }

    /// What the broker says when it is to store the event; empty when it has stored it.
    std::string problemOfPush(const QString &event)
    {
        return refusalOf([&] { push(event); }).toStdString();
    }
};

TEST_F(QueueFileTest, CommitsReachTheDiskBeforePushReturns)
{
    push(u"a1"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA journal_mode"_s), u"wal"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA synchronous"_s), 2);
    EXPECT_EQ(sqlInside(u"PRAGMA wal_autocheckpoint"_s), 16'384);
    const auto checkpoints = [this] {
        const QByteArray before = readFile(file);
        delivery.checkpointWhenIdle();
        return readFile(file) != before;
    };
    EXPECT_FALSE(checkpoints()) << "nothing was delivered";
    EXPECT_EQ(drain(), u"a1"_s);
    EXPECT_EQ(sqlInside(u"PRAGMA synchronous"_s), 1) << "a delivery may be repeated";
    EXPECT_EQ(sqlInside(u"PRAGMA wal_autocheckpoint"_s), 0);
    EXPECT_TRUE(checkpoints());
    push(u"a2"_s);
    EXPECT_FALSE(checkpoints()) << "never twice in a row";
}

TEST_F(QueueFileTest, BatchesDoubleAndABusyDrainCheckpointsAfterFiveHundredEvents)
{
    for (int event = 0; event < 511; ++event)
        push(QChar(u'Ā' + event) + u"1"_s);
    const QByteArray before = readFile(file);
    for (const int size : QList<int>{1, 2, 4, 8, 16} + QList<int>(14, 32)) {
        sent.clear();
        EXPECT_TRUE(delivery.step());
        EXPECT_EQ(sent.size(), size);
    }
    EXPECT_EQ(readFile(file), before);
    EXPECT_TRUE(delivery.step());
    EXPECT_NE(readFile(file), before);
}

TEST_F(QueueFileTest, ProblemIsAskedWithoutWritingUnlessTheLastPushFailed)
{
    const auto logSize = [this] { return QFileInfo(file + u"-wal"_s).size(); };
    push(u"a1"_s);
    const qint64 before = logSize();
    EXPECT_EQ(broker.problem(), u""_s);
    EXPECT_EQ(logSize(), before);
    EXPECT_EQ(DBQueueBroker().problem(), u""_s);
    EXPECT_GT(logSize(), before) << "its first question is answered by writing";
}

TEST_F(QueueFileTest, FilesAreTheOwnersAlone)
{
    const mode_t mask = ::umask(0);
    const auto restoreMask = qScopeGuard([mask] { ::umask(mask); });
    const QString data = folder.filePath(u"data"_s);
    if (::geteuid() == 0) { // A look as root, before the till's user has started the till.
        QDir().mkpath(data);
        std::ignore = ::chown(QFile::encodeName(data).constData(), 65534, 65534);
        ::chmod(QFile::encodeName(data).constData(), 0700);
    }
    push(u"a1"_s);
    EXPECT_EQ(QFileInfo(file).ownerId(), QFileInfo(data).ownerId());
    ::chmod(QFile::encodeName(file).constData(), 0644); // as from a careless copy
    push(u"a2"_s);
    EXPECT_EQ(drain(), u"a1 a2"_s);
    for (const QString &name : {data, file, file + u"-wal"_s, file + u"-shm"_s, file + u"-lease"_s}) {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(name).constData(), &status), 0) << qPrintable(name);
        EXPECT_EQ(status.st_mode & ALLPERMS, name == data ? 0700U : 0600U) << qPrintable(name);
    }
    EXPECT_EQ(QFileInfo(file + u"-lease"_s).ownerId(), QFileInfo(file).ownerId());
}

TEST_F(QueueFileTest, UnusableFileIsRefusedByNameLeftAloneAndUsedAgainWhenItIsMended)
{
    expectsDamage = true;
    push(u"a1 b1"_s);
    sql(u"VACUUM"_s);
    sql(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    const QByteArray good = readFile(file);
    const auto changed = [&](const QByteArray &from, const QString &statement) {
        const QString name = folder.filePath(u"changed.db"_s);
        writeFile(name, from);
        runSql(name, statement);
        return readFile(name);
    };
    const std::tuple<const char *, QByteArray, const char *> cases[] = {
        {"not a database", QByteArray(8192, 'x'), "не является базой данных"},
        {"a single byte", "x", "не является базой данных; проверьте Queue:database"},
        {"cut off", good.first(good.size() / 2), "повреждён"},
        {"of another program", changed({}, u"CREATE TABLE theirs (x)"_s), "принадлежит другой программе"},
        {"ours, but no queue", changed(good, u"PRAGMA application_id = 1"_s), "принадлежит другой программе"},
        {"of a newer version", changed(good, u"PRAGMA user_version = 99"_s), "более новой версией"},
    };
    for (const auto &[what, bytes, text] : cases) {
        SCOPED_TRACE(what);
        putFile(bytes);
        EXPECT_THAT(broker.problem().toStdString(), AllOf(HasSubstr("«" + file.toStdString()), HasSubstr(text)));
        EXPECT_THROW(push(u"a1"_s), BasicException);
        EXPECT_THROW(delivery.step(), BasicException);
        EXPECT_EQ(readFile(file), bytes);
        putFile(good);
        EXPECT_EQ(broker.problem(), u""_s);
        push(u"c1"_s);
    }
}

TEST_F(QueueFileTest, FolderOrFileThatCannotBeOrIsNotToBeMadeIsRefused)
{
    const QString data = folder.filePath(u"data"_s);
    writeFile(data, "a file where the folder should be");
    EXPECT_THAT(problemOfPush(u"a1"_s), HasSubstr("не удалось создать"));
    EXPECT_THROW(push(u"a1"_s, u""_s), BasicException) << "nobody to deliver it to";
    configure("database = " + QFile::encodeName(data) + "/deep/queue.db\n");
    EXPECT_THAT(DBQueueBroker().problem().toStdString(), HasSubstr("не удалось создать папку"));
    configure({});
    QFile::remove(data);
    EXPECT_THROW(QueueAdmin(), BasicException);
    EXPECT_FALSE(QFile::exists(data));
    QDir().mkpath(file);
    EXPECT_THAT(problemOfPush(u"a1"_s), HasSubstr("не удалось открыть файл"));
    QDir().rmdir(file);
}

TEST_F(QueueFileTest, FileThatCannotBeWrittenNamesTheReasonLosesNothingAndIsUsedWhenItCanBe)
{
    const auto lock = [this] {
        sqlInside(u"PRAGMA busy_timeout = 0"_s);
        QSqlDatabase locker = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"0"_s); // sorts before the queue's own
        locker.setDatabaseName(file);
        EXPECT_TRUE(locker.open() && QSqlQuery(locker).exec(u"BEGIN IMMEDIATE"_s));
    };
    std::optional<FullDisk> fullDisk;
    const std::tuple<const char *, std::function<void()>, std::function<void()>> cases[] = {
        {"ошибка чтения или записи диска",
         [&] {
             delivery.hasDeliverable(); // keeps the log
             fullDisk.emplace(QFileInfo(file + u"-wal"_s).size());
         },
         [&] { fullDisk.reset(); }},
        {"нет места на диске", [] { sqlInside(u"PRAGMA max_page_count = 1"_s); }, [] {}},
        {"нет права записи", [] { refuseWrites(); }, [] {}},
        {"занят другой программой", lock, [] { QSqlDatabase::removeDatabase(u"0"_s); }},
    };
    for (const auto &[reason, begin, end] : cases) {
        SCOPED_TRACE(reason);
        push(u"a1"_s);
        begin();
        EXPECT_THAT(problemOfPush(u"a2"_s + QString(100'000, u'x')), HasSubstr(reason));
        if (fullDisk) {
            EXPECT_THAT(broker.problem().toStdString(), HasSubstr(reason)) << "shows at the commit and not before";
        }
        end();
        EXPECT_EQ(broker.problem(), u""_s);
        push(u"a3"_s);
    }
    EXPECT_EQ(drain(), u"a1 a3 a1 a3 a1 a3 a1 a3"_s);
}

TEST_F(QueueFileTest, ReadOnlyFileIsRefusedAndKeepsWhatIsInIt)
{
    push(u"a1"_s);
    const auto setRights = [this](mode_t forFiles, mode_t forFolders) {
        for (const QString &name : {file, file + u"-wal"_s, file + u"-shm"_s})
            ::chmod(QFile::encodeName(name).constData(), forFiles);
        for (const QString &name : {QFileInfo(file).path(), folder.path()})
            ::chmod(QFile::encodeName(name).constData(), forFolders);
    };
    const uid_t user = ::geteuid();
    const uid_t somebody = user == 0 ? 65534 : user; // root may write whatever the rights
    if (::seteuid(somebody) != 0 || ::seteuid(user) != 0)
        GTEST_SKIP() << "cannot become somebody else";
    setRights(0444, 0555);
    EXPECT_EQ(::seteuid(somebody), 0);
    DBQueueBroker other;
    EXPECT_THAT(other.problem().toStdString(), HasSubstr("нет права записи"));
    EXPECT_THROW(other.push(u"kvo"_s, eventNamed(u"a2"_s), {}), BasicException);
    EXPECT_EQ(::seteuid(user), 0);
    setRights(0600, 0700);
    EXPECT_EQ(other.problem(), u""_s);
    other.push(u"kvo"_s, eventNamed(u"a3"_s), {});
    EXPECT_EQ(drain(), u"a1 a3"_s);
}

TEST_F(QueueFileTest, FileThatIsTakenAwayOrReplacedIsNotWrittenToAnyMore)
{
    for (const bool isReplaced : {false, true}) {
        SCOPED_TRACE(isReplaced);
        push(u"a1"_s);
        sql(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
        const QString old = file + QString::number(isReplaced);
        for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
            QFile::rename(file + suffix, old + suffix);
        if (isReplaced)
            QFile::copy(old, file);
        push(u"b1"_s);
        EXPECT_EQ(drain(), isReplaced ? u"a1 b1"_s : u"b1"_s);
        EXPECT_EQ(runSql(old, u"SELECT COUNT(*) FROM event"_s), QVariantList{1});
    }
}

TEST_F(QueueFileTest, DrainGoesOnWhenTheFileCanBeUsedAgain)
{
    putFile(QByteArray(8192, 'x'));
    std::atomic<int> count = 0;
    QueueDrain queueDrain(1ms);
    queueDrain.setHandler(u"kvo"_s, [&count](const QJsonObject &) { ++count; });
    queueDrain.start();
    EXPECT_FALSE(queueDrain.waitUntilDrained(100ms));
    removeFiles();
    push(u"a1"_s);
    EXPECT_TRUE(queueDrain.waitUntilDrained(30s));
    EXPECT_EQ(count, 1);
}

TEST_F(QueueFileTest, ConfigurationNamesTheDatabaseOrTheProblem)
{
    const std::pair<QByteArray, QString> cases[] = {
        {"", file},
        {"database = other.db\n[Host]\ndataFolder = /srv/till\n", u"/srv/till/other.db"_s},
        {"driver = QPSQL\ndatabase = loyalty\n", u"loyalty@localhost"_s},
        {"driver = QPSQL\ndatabase = loyalty\nhost = db\nport = 5433\n", u"loyalty@db:5433"_s},
        {"driver = QPSQL\ndatabase = \n", u"Queue:database"_s},
        {"driver = QMYSQL\n", u"Queue:driver"_s},
    };
    for (const auto &[lines, expected] : cases) {
        try {
            EXPECT_EQ(configure(lines).name(), expected);
        } catch (const BasicException &error) {
            EXPECT_THAT(error.what(), HasSubstr(expected.toStdString()));
        }
    }
    const auto server = configure("driver = QPSQL\nuser = till\npassword = secret\noptions = sslmode=verify-full\n");
    EXPECT_EQ((QStringList{server.user, server.password, server.options}),
              (QStringList{u"till"_s, u"secret"_s, u"sslmode=verify-full"_s}));
}
