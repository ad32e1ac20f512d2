// A machine that starts after a power cut, played on a copy of its disk.
#include "powercutremains.h"

#include <core/basicexception.h>
#include <queue/queuedelivery.h>

#include <sqlite3.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <iostream>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace {

bool isSound(const QString &database)
{
    sqlite3 *connection = nullptr;
    sqlite3_stmt *check = nullptr;
    // The file is left for the queue to recover: no checkpoint when it is closed.
    const bool sound =
        sqlite3_open_v2(database.toUtf8().constData(), &connection, SQLITE_OPEN_READWRITE, "unix") == SQLITE_OK &&
        sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr) == SQLITE_OK &&
        sqlite3_prepare_v2(connection, "PRAGMA integrity_check", -1, &check, nullptr) == SQLITE_OK &&
        sqlite3_step(check) == SQLITE_ROW &&
        QByteArray(reinterpret_cast<const char *>(sqlite3_column_text(check, 0))) == "ok";
    sqlite3_finalize(check);
    sqlite3_close(connection);
    return sound;
}

} // namespace

void powercutremains::put(const PowerCutDisk::Contents &contents, const QString &folder)
{
    const QDir directory(folder);
    for (const QString &old : directory.entryList({u"*-wal"_s, u"*-journal"_s}, QDir::Files))
        QFile::remove(directory.filePath(old));
    for (const auto &[name, bytes] : contents) {
        QFile file(directory.filePath(QFileInfo(QString::fromStdString(name)).fileName()));
        if (!file.open(QFile::WriteOnly) || file.write(bytes.data(), bytes.size()) != std::ssize(bytes))
            throw std::runtime_error("cannot write " + file.fileName().toStdString());
    }
}

std::optional<QList<QJsonObject>> powercutremains::events(const PowerCutDisk::Contents &contents)
{
    const QTemporaryDir folder;
    put(contents, folder.path());
    const QString database = folder.filePath(u"queue.db"_s);
    if (!isSound(database))
        return {};
    QList<QJsonObject> events;
    try {
        QueueDelivery delivery({.database = database},
                               {{u"kvo"_s, [&events](const QJsonObject &event) { events.append(event); }}});
        while (delivery.step())
            ;
    } catch (const BasicException &error) {
        std::cout << error.what() << '\n';
        return {};
    }
    return events;
}
