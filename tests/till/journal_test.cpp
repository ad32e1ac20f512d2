// The journal on the disk: each check once, whatever a crash has left behind.
#include "tests/support/file.h"
#include "till/journal.h"

#include <core/basicexception.h>

#include <gmock/gmock.h>

#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

class Journal : public testing::Test
{
protected:
    static QJsonObject check(const QString &identifier) { return {{u"check"_s, identifier}}; }

    QTemporaryDir folder;
    till::Journal journal{folder.filePath(u"journal.jsonl"_s)};
};

TEST_F(Journal, KeepsOneLineForEachCheckForItsOwnerOnly)
{
    journal.enter(check(u"a"_s));
    const QString large(1'000'000, u'b');
    journal.enter(check(large));
    journal.enter(check(large)); // The crash came after the journal and before the open check was removed.
    EXPECT_EQ(readFile(journal.fileName()), "{\"check\":\"a\"}\n{\"check\":\"" + large.toUtf8() + "\"}\n");
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(journal.fileName()) & others);
}

TEST_F(Journal, ReplacesALineThatWasCutShort)
{
    const QByteArray line = "{\"check\":\"b\"}\n";
    for (const QByteArray complete : {"", "{\"check\":\"a\"}\n"}) {
        for (qsizetype length = 0; length <= line.size(); ++length) {
            writeFile(journal.fileName(), complete + line.left(length));
            journal.enter(check(u"b"_s));
            EXPECT_EQ(readFile(journal.fileName()), complete + line) << length;
        }
    }
}

TEST_F(Journal, SaysWhichFileCannotBeWritten)
{
    till::Journal impossible(folder.filePath(u"none/journal.jsonl"_s));
    EXPECT_THAT([&] { impossible.enter(check(u"a"_s)); },
                testing::ThrowsMessage<BasicException>(testing::HasSubstr("none/journal.jsonl")));
}

} // namespace
