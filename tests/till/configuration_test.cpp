// Broken configurations, each with what the till says about it, and the sample.
#include "tests/support/file.h"
#include "tests/support/refusal.h"
#include "tests/support/test.h"
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
    const std::pair<QByteArray, const char *> cases[] = {
        {"[kvo]\nhost = http://a", "строка 2, kvo:host: нет такого раздела; вероятно, имелось в виду Kvo"},
        {"host = http://a", "строка 1, host: запись стоит до первого раздела"},
        {"[Kvo]\nhots = http://a", "строка 2, Kvo:hots: нет такой настройки; вероятно, имелось в виду Kvo:host"},
        {"[Kvo]\ndataFolder = /tmp", "Kvo:dataFolder: нет такой настройки; вероятно, имелось в виду Host:dataFolder"},
        {"[Kvo]\nverificationLimit = nan", "\"nan\" не является числом"},
        {"[Kvo]\nverificationLimit = 0,5", "Kvo:verificationLimit: дробная часть отделяется точкой, укажите 0.5"},
        {"[Kvo]\ntimeout = 10s", "\"10s\" не является числом, укажите число 1 ... 600000"},
        {"[Kvo]\ntimeout = 0", "Kvo:timeout: 0 вне допустимых пределов 1 ... 600000"},
        {"[Kvo]\nverificationMessage = Code", "Kvo:verificationMessage: в тексте нет %1"},
        {"[Kvo]\nhost = http://127.0.0.1:99999", "Kvo:host: укажите значение в виде http[s]://HOST[:PORT]"},
        {"[Kvo]\nhost = ftp://a", "Kvo:host: укажите значение"},
        {"[Kvo]\npath = api", "Kvo:path: укажите значение в виде /PATH"},
        {"[Kvo]\nverificationPath =", "Kvo:verificationPath: укажите значение"},
        {"[Queue]\ndriver = MYSQL", "Queue:driver: значение \"MYSQL\" не поддерживается, возможны QSQLITE, QPSQL"},
        {"[Queue]\nport = 70000", "70000 вне допустимых пределов 1 ... 65535"},
        {"[Till]\npluginFolder = /nowhere", "строка 2, Till:pluginFolder: нет папки /nowhere"},
    };
    for (const auto &[content, text] : cases) {
        const std::string said = complaint(content).toStdString();
        EXPECT_THAT(said, HasSubstr(m_file.toStdString())) << content.constData();
        EXPECT_THAT(said, HasSubstr(text)) << content.constData();
    }
}

TEST_F(ConfigurationTest, NamesAllMistakesAtOnceButNoSecrets)
{
    EXPECT_THAT(
        complaint("[Kvo]\npasword = secret\nhost = http://u:secret@a:x\ntimeout = -1\n").toStdString(),
        AllOf(HasSubstr("Kvo:pasword"), HasSubstr("Kvo:host"), HasSubstr("Kvo:timeout"), Not(HasSubstr("secret"))));
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
