// The configuration file: what values mean literally, and which mistakes are told how.
#include "tests/support/commalocale.h"
#include "tests/support/file.h"
#include "tests/support/refusal.h"
#include "tests/support/test.h"

#include <core/config.h>

struct ConfigTest : testing::Test
{
    Config read(const QByteArray &content)
    {
        writeFile(m_file, content);
        return Config(m_file);
    }

    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(u"till.ini"_s);
};

TEST_F(ConfigTest, TakesValuesLiterally)
{
    const Config config = read("\xEF\xBB\xBF; comment\r\n[Kvo]\r\n  password = a,b\\n%41;#=\"x \r\n"
                               "quoted=\"  spaced \"\r\nhalf=\"\nempty=\"\"\r\nhost=first\n# comment\n\n"
                               "[ Log ]\nfile=журнал.log\n[Kvo]\nhost=last");
    const std::pair<QString, QString> cases[] = {{u"Kvo:password"_s, u"a,b\\n%41;#=\"x"_s},
                                                 {u"Kvo:quoted"_s, u"  spaced "_s},
                                                 {u"Kvo:half"_s, u"\""_s},
                                                 {u"Kvo:empty"_s, u""_s},
                                                 {u"Kvo:host"_s, u"last"_s},
                                                 {u"Log:file"_s, u"журнал.log"_s},
                                                 {u"kvo:host"_s, u"missing"_s}};
    for (const auto &[key, value] : cases)
        EXPECT_EQ(config.getString(key, u"missing"_s), value) << qUtf8Printable(key);
}

TEST_F(ConfigTest, NamesFileAndLineOfMistakes)
{
    for (const QByteArray mistake : {"host", "[Kvo", "[]", "= value", "name = \xD0"})
        EXPECT_THAT(refusalOf([&] { read("[Kvo]\n" + mistake + "\n"); }).toStdString(),
                    AllOf(HasSubstr("till.ini"), HasSubstr("строка 2")));
    EXPECT_THAT(refusalOf([] { Config(u"/nowhere/till.ini"_s); }).toStdString(), HasSubstr("/nowhere/till.ini"));
}

TEST_F(ConfigTest, ReadsNumbersOrGivesDefaultAndOneWarning)
{
    const CommaLocale commas;
    const Config config = read("[N]\nint=-42\ndouble=1.5\nbad=10s\ncomma=1,5\nnan=nan\nbig=3000000000\nempty=\n");
    EXPECT_EQ(config.getInt(u"N:int"_s, 7), -42);
    EXPECT_EQ(config.getDouble(u"N:double"_s, 7), 1.5);
    for (const QString &key : {u"N:bad"_s, u"N:comma"_s, u"N:nan"_s, u"N:big"_s, u"N:empty"_s}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(config.getInt(key, 7), 7);
        EXPECT_THAT(testing::internal::GetCapturedStderr(),
                    AllOf(testing::ContainsRegex("^[^\n]* WARN poshost - [^\n]*\n$"), HasSubstr(key.toStdString())));
    }
    EXPECT_EQ(config.getDouble(u"N:comma"_s, 7), 7);
    EXPECT_EQ(config.getDouble(u"N:nan"_s, 7), 7);
    EXPECT_EQ(config.getInt(u"N:missing"_s, 7), 7);
}
