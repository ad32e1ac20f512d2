// Broken configurations, each with what the till says about it, and the lists of settings beside code, docs and sample.
#include "tests/support/golden.h"
#include "tests/support/refusal.h"
#include "till/configuration.h"

#include <QtCore/QDirIterator>
#include <QtCore/QRegularExpression>

struct ConfigurationTest : testing::Test
{
    /// What reading this file is refused with; empty when it is accepted.
    QString complaint(const QByteArray &content)
    {
        writeFile(m_file, content);
        return refusalOf([this] { till::readConfiguration(m_file); });
    }

    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(u"till.ini"_s);
};

TEST_F(ConfigurationTest, RefusesWhatItDoubts)
{
    expectCases(u"till/configurations.txt"_s, [this](const QByteArray &content) { return complaint(content); });
}

TEST(Settings, AreTheOnesThatTheCodeReads)
{
    QMap<QString, QString> listed;
    for (const Setting &setting : till::allSettings())
        listed.insert(setting.key, setting.defaultValue);
    // A key, and the default where one is written beside it.
    static const QRegularExpression reading(uR"re((?<!key = )(get\w+\()?u"((?:Host|Queue|Log|Till|Kvo):\w+)"_s)re"
                                            uR"re((?:, (?:u"([^"]+)"_s|(-?\d+)(?:\.0)?\b))?)re"_s);
    QMap<QString, QString> read;
    for (const QString &folder : {u"client"_s, u"plugin"_s, u"host"_s, u"till"_s}) {
        QDirIterator files(QStringLiteral(KVO_SOURCES) + u'/' + folder, {u"*.cpp"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            for (const auto &match : reading.globalMatch(QString::fromUtf8(readFile(files.next())))) {
                const QString given = match.captured(3) + match.captured(4);
                const bool isDefault = match.hasCaptured(1) && !given.isEmpty();
                const QString key = match.captured(2);
                if (isDefault || !read.contains(key))
                    read.insert(key, isDefault && !listed.value(key).isEmpty() ? given : listed.value(key));
            }
        }
    }
    EXPECT_EQ(read, listed);
}

TEST(Settings, AreAllInTheSampleAndRightThere)
{
    QByteArray sample = readFile(QStringLiteral(KVO_SOURCES "/till/kvo-till.ini.example"));
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"sample.ini"_s);
    // Entries that are commented out have no blank after the semicolon.
    writeFile(file, sample.replace("\n;", "\n").replace("\n ", "\n; "));
    const auto config = QSharedPointer<Config>::create(file);
    for (const till::SettingFault &fault : till::settingFaults(*config, till::allSettings()))
        ADD_FAILURE() << "line " << fault.entry.line << ": " << fault.entry.key().toStdString();
    for (const Setting &setting : till::allSettings())
        EXPECT_NE(config->getString(setting.key, u"(missing)"_s), u"(missing)"_s) << setting.key.toStdString();
}
