// The log: where lines go, at which level, and who can read them.
#include <core/basicexception.h>
#include <core/config.h>
#include <core/logsetup.h>

#include <gmock/gmock.h>
#include <log4qt/logmanager.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using testing::HasSubstr;
using testing::Not;

namespace {

class Settings : public Config
{
public:
    explicit Settings(const QHash<QString, QString> &values) : m_texts(values) {}
    QString getString(const QString &key, const QString &defaultValue) const override
    {
        return m_texts.value(key, defaultValue);
    }
    int getInt(const QString &key, int defaultValue) const override
    {
        return m_texts.contains(key) ? m_texts.value(key).toInt() : defaultValue;
    }

private:
    QHash<QString, QString> m_texts;
};

std::string contentOf(const QString &fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qUtf8Printable(fileName);
    return file.readAll().toStdString();
}

} // namespace

class LogTest : public testing::Test
{
protected:
    ~LogTest() override { setUpLogging(Config()); }

    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath(u"logs/till.log"_s);
    Log4Qt::Logger *m_logger = Log4Qt::LogManager::logger(u"kvo"_s);
};

TEST_F(LogTest, WritesEnabledLevelsLiterally)
{
    setUpLogging(Settings({{u"Log:file"_s, m_file}}));
    m_logger->debug(u"too fine"_s);
    m_logger->info(u"100 %1 {} {0}\n2024-01-01 forged"_s);
    EXPECT_THAT(contentOf(m_file),
                testing::MatchesRegex(
                    "[-0-9]+ [0-9:.]+ \\[[0-9]+\\] INFO kvo - 100 %1 \\{\\} \\{0\\}\n    2024-01-01 forged\n"));
}

TEST_F(LogTest, KeepsConfiguredNumberOfPrivateFiles)
{
    setUpLogging(Settings({{u"Log:file"_s, m_file}, {u"Log:maxFileSize"_s, u"200"_s}, {u"Log:maxFiles"_s, u"2"_s}}));
    for (int i = 0; i < 20; ++i)
        m_logger->info(QString(100, u'x'));
    m_logger->info(u"last"_s);

    const QFileInfoList files = QFileInfo(m_file).dir().entryInfoList(QDir::Files);
    EXPECT_EQ(files.size(), 3);
    for (const QFileInfo &file : files)
        EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                  QFile::Permissions())
            << qUtf8Printable(file.fileName());
    EXPECT_THAT(contentOf(m_file), HasSubstr("last"));
}

TEST_F(LogTest, AppendsAfterARestartAndMakesAnOldFilePrivate)
{
    QDir().mkpath(QFileInfo(m_file).path());
    QFile old(m_file);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("before\n") > 0);
    old.close();
    ASSERT_TRUE(old.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    setUpLogging(Settings({{u"Log:file"_s, m_file}}));
    m_logger->info(u"after"_s);
    EXPECT_THAT(contentOf(m_file), testing::MatchesRegex("before\n.*after\n"));
    EXPECT_FALSE(QFile::permissions(m_file).testFlag(QFile::ReadOther));
}

TEST_F(LogTest, WithoutFileOnlyWarningsAndErrorsReachTheConsole)
{
    setUpLogging(Settings({{u"Log:level"_s, u"trace"_s}}));
    testing::internal::CaptureStderr();
    m_logger->info(u"quiet"_s);
    m_logger->warn(u"heard"_s);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::AllOf(HasSubstr("heard"), Not(HasSubstr("quiet"))));
}

TEST_F(LogTest, UnfitSettingsAreToldAndReplaced)
{
    testing::internal::CaptureStderr();
    setUpLogging(Settings({{u"Log:file"_s, m_file},
                           {u"Log:level"_s, u"LOUD"_s},
                           {u"Log:maxFileSize"_s, u"0"_s},
                           {u"Log:maxFiles"_s, u"-1"_s}}));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::AllOf(HasSubstr("Log:level"), HasSubstr("Log:maxFileSize"), HasSubstr("Log:maxFiles")));
    m_logger->info(u"still works"_s);
    EXPECT_THAT(contentOf(m_file), HasSubstr("still works"));
}

TEST_F(LogTest, AFileThatCannotBeOpenedIsAnErrorThatNamesIt)
{
    try {
        setUpLogging(Settings({{u"Log:file"_s, m_folder.path()}}));
        FAIL();
    } catch (const BasicException &fault) {
        EXPECT_THAT(fault.what(), testing::AllOf(HasSubstr(m_folder.path().toStdString()), HasSubstr("Log:file")));
    }
}

TEST_F(LogTest, ChildLoggersTakeTheirParentsLevel)
{
    setUpLogging(Settings({{u"Log:file"_s, m_file}}));
    Log4Qt::Logger *child = Log4Qt::LogManager::logger(u"kvo.net"_s);
    EXPECT_EQ(child, Log4Qt::LogManager::logger(u"kvo::net"_s));
    m_logger->setLevel(Log4Qt::Level::ERROR_INT);
    child->warn(u"dropped"_s);
    m_logger->setLevel(Log4Qt::Level::NULL_INT);
    child->warn(u"kept"_s);
    EXPECT_THAT(contentOf(m_file), testing::AllOf(HasSubstr("kvo::net - kept"), Not(HasSubstr("dropped"))));
}
