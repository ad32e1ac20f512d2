// What the till says of a plugin that it cannot use. Loading the real one is part of every whole sale.
#include "till/loyaltyplugin.h"

#include <core/basicexception.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QLibraryInfo>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

TEST(LoyaltyPlugin, SaysWhatIsWrongWithTheFile)
{
    const QTemporaryDir folder;
    const auto expectComplaint = [](const QString &path, const char *complaint) {
        EXPECT_THAT([&] { const till::LoyaltyPlugin plugin(path); },
                    testing::ThrowsMessage<BasicException>(testing::HasSubstr(complaint)));
    };
    expectComplaint(folder.filePath(u"none"_s), "none: нет такой папки");
    expectComplaint(folder.path(), "libKvo.so: нет такого файла");
    const QString file = folder.filePath(u"libKvo.so"_s);
    ASSERT_TRUE(QFile::copy(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s, file));
    expectComplaint(folder.path(), "а нужен модуль \"Kvo\", класс \"Plugin\"");
    ASSERT_TRUE(QFile::resize(file, 1000));
    expectComplaint(folder.path(), "libKvo.so: файл не является модулем Qt");
}
