// The journal on the disk: each check once, whatever a crash has left behind.
#include "till/journal.h"

#include <core/basicexception.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

class Journal : public testing::Test
{
protected:
    QByteArray content() const
    {
        QFile file(journal.fileName());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }

    void write(const QByteArray &bytes) const
    {
        QFile file(journal.fileName());
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size());
    }

    static QJsonObject check(const QString &identifier) { return {{u"check"_s, identifier}}; }

    QTemporaryDir folder;
    till::Journal journal{folder.filePath(u"journal.jsonl"_s)};
};

TEST_F(Journal, KeepsOneLineForEachCheckForItsOwnerOnly)
{
    journal.enter(check(u"a"_s));
    journal.enter(check(u"b"_s));
    journal.enter(check(u"b"_s)); // The crash came after the journal and before the open check was removed.
    EXPECT_EQ(content(), "{\"check\":\"a\"}\n{\"check\":\"b\"}\n");
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(journal.fileName()) & others);
}

TEST_F(Journal, ReplacesALineThatWasCutShort)
{
    const QByteArray complete = "{\"check\":\"a\"}\n";
    const QByteArray line = "{\"check\":\"b\"}\n";
    for (qsizetype length = 0; length <= line.size(); ++length) {
        write(complete + line.left(length));
        journal.enter(check(u"b"_s));
        EXPECT_EQ(content(), complete + line) << length;
    }
    write(line.chopped(1)); // Cut short in the first line of all.
    journal.enter(check(u"b"_s));
    EXPECT_EQ(content(), line);
}

TEST_F(Journal, FindsTheLastLineHoweverLongItIs)
{
    QJsonObject large = check(u"large"_s);
    large.insert(u"card"_s, QString(1'000'000, u'7'));
    journal.enter(check(u"a"_s));
    journal.enter(large);
    const QByteArray before = content();
    journal.enter(large);
    EXPECT_EQ(content(), before);
}

TEST_F(Journal, SaysWhichFileCannotBeWritten)
{
    till::Journal impossible(folder.filePath(u"none/journal.jsonl"_s));
    try {
        impossible.enter(check(u"a"_s));
        FAIL();
    } catch (const BasicException &error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("none/journal.jsonl"));
    }
}

} // namespace
