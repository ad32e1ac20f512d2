// Broken configurations, each with what the till says about it, and the sample.
#include "tests/support/golden.h"
#include "tests/support/refusal.h"
#include "till/configuration.h"

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
