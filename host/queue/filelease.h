// The lease of a drain on a database file.
#pragma once

#include "queuelease.h"

#include <QtCore/QString>

/// The lock is on one byte of the file "<database>-lease", taken when the lease is made: the byte with the lease's
/// number. The kernel drops it with the process and with this object. The locks belong to the open file (not to the
/// process, as POSIX locks do), so drains of one process keep each other out as well.
class FileLease : public QueueLease
{
public:
    /// Throws BasicException when the lock file cannot be made or locked.
    explicit FileLease(const QString &databaseName);
    ~FileLease() override;
    Q_DISABLE_COPY_MOVE(FileLease)

    void hold(QueueConnection &) override {}
    bool isHeldByOther(qint64 lease, QueueConnection &connection) const override;

private:
    QString m_fileName;
    int m_descriptor = -1;
};
