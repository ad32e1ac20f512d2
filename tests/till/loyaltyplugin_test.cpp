// What the till says of a plugin that it cannot use. Loading the real one is part of every whole sale.
#include "till/loyaltyplugin.h"

#include <core/basicexception.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QLibraryInfo>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

std::string complaint(const QString &folder)
{
    try {
        const till::LoyaltyPlugin plugin(folder);
    } catch (const BasicException &error) {
        return error.what();
    }
    return "no complaint";
}

TEST(LoyaltyPlugin, SaysWhatIsWrongWithTheFile)
{
    const QTemporaryDir folder;
    EXPECT_THAT(complaint(folder.filePath(u"none"_s)), testing::HasSubstr("none: нет такой папки"));
    EXPECT_THAT(complaint(folder.path()), testing::HasSubstr("libKvo.so: нет такого файла"));

    const QString file = folder.filePath(u"libKvo.so"_s);
    const QString other = QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s;
    ASSERT_TRUE(QFile::copy(other, file));
    EXPECT_THAT(complaint(folder.path()), testing::HasSubstr("а нужен модуль \"Kvo\", класс \"Plugin\""));

    ASSERT_TRUE(QFile::resize(file, 1000));
    EXPECT_THAT(complaint(folder.path()), testing::HasSubstr("libKvo.so: файл не является модулем Qt"));
}

} // namespace
