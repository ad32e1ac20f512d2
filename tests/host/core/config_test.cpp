// The configuration file: what values mean literally, and which mistakes are told how.
#include "commalocale.h"

#include <core/basicexception.h>
#include <core/config.h>

#include <gmock/gmock.h>

#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

class ConfigTest : public testing::Test
{
protected:
    Config read(const QByteArray &content)
    {
        QFile file(m_folder.filePath(u"till.ini"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        return Config(file.fileName());
    }

    std::string faultOf(const QByteArray &content)
    {
        try {
            read(content);
        } catch (const BasicException &fault) {
            return fault.what();
        }
        return "no fault";
    }

    QTemporaryDir m_folder;
};

TEST_F(ConfigTest, TakesValuesLiterally)
{
    const Config config = read("\xEF\xBB\xBF; comment\r\n"
                               "[Kvo]\r\n"
                               "  password = a,b\\n%41;#=\"x \r\n"
                               "quoted=\"  spaced \"\r\n"
                               "half=\"\n"
                               "empty=\r\n"
                               "host=first\n"
                               "# comment\n\n"
                               "[ Log ]\n"
                               "file=журнал.log\n"
                               "[Kvo]\n"
                               "host=last");
    const std::pair<QString, QString> cases[] = {
        {u"Kvo:password"_s, u"a,b\\n%41;#=\"x"_s},
        {u"Kvo:quoted"_s, u"  spaced "_s},
        {u"Kvo:half"_s, u"\""_s},
        {u"Kvo:empty"_s, u""_s},
        {u"Kvo:host"_s, u"last"_s},
        {u"Log:file"_s, u"журнал.log"_s},
        {u"kvo:host"_s, u"missing"_s},
    };
    for (const auto &[key, value] : cases)
        EXPECT_EQ(config.getString(key, u"missing"_s), value) << qUtf8Printable(key);
}

TEST_F(ConfigTest, NamesFileAndLineOfMistakes)
{
    for (const QByteArray mistake : {"host", "[Kvo", "[]", "= value", "name = \xD0"}) {
        EXPECT_THAT(faultOf("[Kvo]\n" + mistake + "\n"),
                    testing::AllOf(testing::HasSubstr("till.ini"), testing::HasSubstr("строка 2")))
            << mistake.constData();
    }
}

TEST_F(ConfigTest, NamesTheFileThatIsMissing)
{
    try {
        Config(u"/nowhere/till.ini"_s);
        FAIL();
    } catch (const BasicException &fault) {
        EXPECT_THAT(fault.what(), testing::HasSubstr("/nowhere/till.ini"));
    }
}

TEST_F(ConfigTest, ReadsNumbersTheSameInEveryLocale)
{
    const CommaLocale commas;
    const Config config = read("[N]\nint=-42\ndouble=1.5\n");
    EXPECT_EQ(config.getInt(u"N:int"_s, 7), -42);
    EXPECT_EQ(config.getDouble(u"N:double"_s, 7), 1.5);
}

TEST_F(ConfigTest, GivesDefaultAndOneWarningForWhatIsNoNumber)
{
    const Config config = read("[N]\nbad=10s\ncomma=1,5\nnan=nan\nbig=3000000000\nempty=\n");
    for (const QString &key : {u"N:bad"_s, u"N:comma"_s, u"N:nan"_s, u"N:big"_s, u"N:empty"_s}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(config.getInt(key, 7), 7);
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
        EXPECT_THAT(log, testing::HasSubstr(" WARN poshost - "));
        EXPECT_THAT(log, testing::HasSubstr(key.toStdString()));
    }
    EXPECT_EQ(config.getDouble(u"N:comma"_s, 7), 7);
    EXPECT_EQ(config.getDouble(u"N:nan"_s, 7), 7);
    EXPECT_EQ(config.getInt(u"N:missing"_s, 7), 7);
}
