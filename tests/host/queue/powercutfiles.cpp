// Files and databases of a machine that has lost its power.
#include "powercutfiles.h"

#include <support/file.h>

#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

using namespace Qt::Literals::StringLiterals;

namespace powercut {

void commitWithoutSync()
{
    QSqlQuery query(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst(), false));
    if (!query.exec(u"PRAGMA synchronous = NORMAL"_s))
        throw std::runtime_error("PRAGMA synchronous = NORMAL");
}

void put(const PowerCutDisk::Contents &contents, const QString &folder)
{
    const QDir directory(folder);
    for (const QString &old : directory.entryList({u"*-wal"_s, u"*-journal"_s}, QDir::Files))
        QFile::remove(directory.filePath(old));
    for (const auto &[name, bytes] : contents)
        writeFile(directory.filePath(QFileInfo(QString::fromStdString(name)).fileName()),
                  QByteArray::fromStdString(bytes));
}

bool isSound(const QString &fileName)
{
    bool sound = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"check"_s);
        database.setDatabaseName(fileName);
        sound = database.open();
        QSqlQuery check(u"PRAGMA integrity_check"_s, database);
        sound = sound && check.next() && check.value(0) == u"ok"_s;
    }
    QSqlDatabase::removeDatabase(u"check"_s);
    return sound;
}

} // namespace powercut
