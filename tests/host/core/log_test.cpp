// The log: where lines go, at which level, and who can read them.
#include "tests/support/fakeconfig.h"
#include "tests/support/file.h"
#include "tests/support/test.h"

#include <core/basicexception.h>
#include <core/logsetup.h>

#include <log4qt/logmanager.h>
#include <sys/stat.h>

#include <QtCore/QScopeGuard>

struct LogTest : testing::Test
{
    ~LogTest() override { setUpLogging(Config()); }

    void setUp(const QVariantHash &settings)
    {
        const FakeConfig config(settings);
        setUpLogging(*Singleton<Config>::instance());
    }

    std::string logged() { return readFile(m_file).toStdString(); }

    static constexpr auto othersRights = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath(u"var/logs/till.log"_s);
    Log4Qt::Logger *m_logger = Log4Qt::LogManager::logger(u"kvo"_s);
};

TEST_F(LogTest, AppendsEnabledLevelsLiterallyToAFileMadePrivate)
{
    writeFile(m_file, "before\n");
    ASSERT_TRUE(QFile::setPermissions(m_file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    testing::internal::CaptureStderr();
    setUp({{u"Log:file"_s, m_file}, {u"Log:maxFileSize"_s, INT_MAX}});
    m_logger->debug(u"too fine"_s);
    m_logger->info(u"100 %1 {} {0}\n2024-01-01 forged"_s);
    EXPECT_THAT(logged(), testing::MatchesRegex("before\n[-0-9]+ [0-9:.]+ \\[[^]]+\\] INFO kvo - "
                                                "100 %1 \\{\\} \\{0\\} 2024-01-01 forged\n"));
    EXPECT_FALSE(QFile::permissions(m_file) & othersRights);
    setUpLogging(Config());
    m_logger->info(u"too fine for the console"_s);
    m_logger->warn(u"no longer in the file"_s);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex("[^\n]* WARN kvo - no longer [^\n]*\n"));
    EXPECT_THAT(logged(), testing::EndsWith("forged\n"));
}

TEST_F(LogTest, KeepsConfiguredNumberOfPrivateFiles)
{
    const mode_t mask = ::umask(0);
    const auto restoreMask = qScopeGuard([mask] { ::umask(mask); });
    setUp({{u"Log:file"_s, m_file}, {u"Log:level"_s, u"warn"_s}, {u"Log:maxFileSize"_s, 200}, {u"Log:maxFiles"_s, 2}});
    for (int i = 0; i < 20; ++i)
        m_logger->warn(QString(100, u'x'));
    Log4Qt::LogManager::rootLogger()->warn(u"last"_s);
    m_logger->info(u"too fine"_s);

    const QFileInfoList files = QFileInfo(m_file).dir().entryInfoList(QDir::Files);
    EXPECT_EQ(files.size(), 3);
    for (const QFileInfo &file : files)
        EXPECT_FALSE(file.permissions() & othersRights) << file.fileName().toStdString();
    EXPECT_THAT(logged(), testing::EndsWith("WARN root - last\n"));
    EXPECT_FALSE(QFile::permissions(QFileInfo(m_file).path()) & othersRights);
    ASSERT_TRUE(QFile::rename(m_file, m_folder.filePath(u"moved"_s)));
    m_logger->warn(u"after another process moved it"_s);
    EXPECT_THAT(logged(), testing::EndsWith("moved it\n"));
    ASSERT_TRUE(QFile::remove(m_file) && QDir().mkdir(m_file));
    m_logger->warn(u"while no file can be made"_s);
    ASSERT_TRUE(QDir().rmdir(m_file));
    m_logger->warn(u"made again"_s);
    EXPECT_THAT(logged(), testing::EndsWith("made again\n"));
    EXPECT_FALSE(QFile::permissions(m_file) & othersRights);
}

TEST_F(LogTest, TellsAndReplacesUnfitSettings)
{
    testing::internal::CaptureStderr();
    setUp({{u"Log:file"_s, m_file}, {u"Log:level"_s, u"LOUD"_s}, {u"Log:maxFileSize"_s, 0}, {u"Log:maxFiles"_s, -1}});
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                AllOf(HasSubstr("Log:level"), HasSubstr("Log:maxFileSize"), HasSubstr("Log:maxFiles")));
    m_logger->info(u"still works"_s);
    EXPECT_THAT(logged(), HasSubstr("still works"));
    const QVariantHash unusable{{u"Log:file"_s, m_folder.path()}};
    const auto namesBoth = AllOf(HasSubstr(m_folder.path().toStdString()), HasSubstr("Log:file"));
    EXPECT_THAT([&] { setUp(unusable); }, testing::ThrowsMessage<BasicException>(namesBoth));
}
