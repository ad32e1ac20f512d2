// Chooses the kind of database.
#include "queuedatabase.h"

#include <QtCore/QRandomGenerator>

// Positive and with room for one more byte in a file offset; 62 random bits do not repeat.
QueueLease::QueueLease() : m_id(static_cast<qint64>(QRandomGenerator::system()->generate64() >> 2) + 1)
{}

std::unique_ptr<QueueDatabase> QueueDatabase::open(const QueueSettings &settings, DatabaseConnection::Commits commits,
                                                   DatabaseConnection::Missing missing)
{
    return settings.driver == QueueSettings::Driver::Sqlite ? openSqlite(settings, commits, missing)
                                                            : openPostgres(settings, commits, missing);
}
