// Whom new files and folders belong to, and who else can use them.
#include "tests/support/file.h"
#include "tests/support/test.h"

#include <core/privatefile.h>

#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFileInfo>

namespace {

constexpr uid_t someUser = 12345;

uid_t ownerOf(const QString &name)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(QFile::encodeName(name).constData(), &status), 0) << name.toStdString();
    return status.st_uid;
}

TEST(PrivateFile, ReportsAFolderThatCannotBeMade)
{
    const QTemporaryDir folder;
    writeFile(folder.filePath(u"file"_s), "");
    for (const auto &[name, reason] : {std::pair(folder.filePath(u"file/a/b"_s), ENOTDIR), {u"/proc/a/b"_s, ENOENT}})
        EXPECT_EQ(makePrivateFolder(name).value(), reason) << name.toStdString();
}

TEST(PrivateFile, BelongsToTheOwnerOfTheFolderWhereRootMakesIt)
{
    const QTemporaryDir folder;
    if (::chown(QFile::encodeName(folder.path()).constData(), someUser, someUser) != 0)
        GTEST_SKIP() << "only root gives files away";
    const QString made = folder.filePath(u"a/b"_s);
    ASSERT_FALSE(makePrivateFolder(made) || makePrivateFolder(made));
    for (const QString &name : {folder.filePath(u"a"_s), made}) {
        EXPECT_EQ(ownerOf(name), someUser) << name.toStdString();
        EXPECT_FALSE(QFileInfo(name).permissions() & (QFile::ExeGroup | QFile::ReadGroup | QFile::ReadOther));
    }
    const QString file = folder.filePath(u"file"_s);
    const QString other = folder.filePath(u"other"_s);
    writeFile(file, "");
    writeFile(other, "");
    ASSERT_TRUE(QFile::link(file, folder.filePath(u"link"_s)));
    giveToOwnerOf(folder.path(), folder.filePath(u"link"_s));
    ASSERT_EQ(::link(QFile::encodeName(other).constData(), QFile::encodeName(made + u"/name"_s).constData()), 0);
    giveToOwnerOf(folder.path(), other);
    EXPECT_EQ(ownerOf(file), 0) << "it is only linked to";
    EXPECT_EQ(ownerOf(other), 0) << "it has another name";
    giveToOwnerOf(folder.path(), file);
    EXPECT_EQ(ownerOf(file), someUser);
}

} // namespace
