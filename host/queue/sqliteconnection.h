// The queue in a file of its own, SQLite's.
#pragma once

#include "queueconnection.h"
#include "queuefile.h"

class SqliteConnection : public QueueConnection
{
public:
    explicit SqliteConnection(const QueueSettings &settings);

    /// False when the file was deleted or replaced while it was open: what is stored from now on would be lost.
    bool isUsable() override;

    /// Carries the write-ahead log into the database.
    void checkpoint() override;

    std::unique_ptr<QueueLease> newLease() const override;
    void begin() override { change(u"BEGIN IMMEDIATE"); }
    void commit() override { change(u"COMMIT"); }
    QStringView rowLock() const override { return {}; } // one writer at a time
    QStringView eventColumn() const override { return u"CAST(e.event AS BLOB)"; }

protected:
    void open(Commits commits, Missing missing) override;
    QString problemText(const QSqlError &error) const override;

private:
    void configure(Commits commits);
    void switchToWriteAheadLog();

    QueueFile m_file;
};
