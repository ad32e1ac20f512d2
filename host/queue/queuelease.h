// Who is sending what: an identifier for a drain that is certain to be given up when its process dies.
#pragma once

#include <QtCore/QString>

/// A lease is a random number n and a lock on byte n of the file "<database>-lease". The kernel drops the lock with the
/// process, however it ends, and with this object; so whether the holder of a lease lives is a fact that can be asked
/// for, independent of clocks and of how long an exchange takes. The locks belong to the open file (not to the
/// process, as POSIX locks do), so drains of one process keep each other out as well.
class QueueLease
{
public:
    /// Takes a lease. Throws BasicException when the lock file cannot be made or locked.
    explicit QueueLease(const QString &databaseName);
    ~QueueLease();
    Q_DISABLE_COPY_MOVE(QueueLease)

    qint64 id() const { return m_id; }

    /// True when another drain lives that holds this lease. Throws BasicException when that cannot be found out.
    bool isHeldByOther(qint64 lease) const;

private:
    QString m_fileName;
    int m_descriptor = -1;
    qint64 m_id = 0;
};
