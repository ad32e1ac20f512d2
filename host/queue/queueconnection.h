// One connection to the queue's database through Qt SQL: settings, checked statements, transactions.
// Used on the thread that has made it, and on no other.
#pragma once

#include "queuefile.h"

#include <QtCore/QStringView>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <functional>
#include <map>

class QueueConnection
{
public:
    enum class Commits {
        Synced, ///< On the disk when commit() returns.
        Lazy,   ///< Survives the death of the process at once, a power failure from the next checkpoint on. No
                ///< checkpoints of its own accord.
    };

    /// Opens the file, making it where it is missing. Throws BasicException when that fails.
    explicit QueueConnection(const QString &fileName);
    Q_DISABLE_COPY_MOVE(QueueConnection)

    const QueueFile &file() const { return m_file; }

    /// Makes the file ours: write-ahead log, how durable this connection's commits are, rights for its owner only.
    void configure(Commits commits);

    /// Runs a statement; returns how many rows it has changed. `sql` must be a literal: it is prepared once and kept.
    /// Throws BasicException when it fails, as all operations here do.
    int change(QStringView sql, const QVariantList &values = {});

    /// Runs a query and calls `row` for each row of its result. `row` must not use this connection.
    void read(QStringView sql, const QVariantList &values, const std::function<void(const QSqlQuery &)> &row);

    /// The first column of the first row; invalid when there is no row.
    QVariant value(QStringView sql, const QVariantList &values = {});

private:
    friend class QueueTransaction;

    struct Registration
    {
        Registration();
        ~Registration();
        Q_DISABLE_COPY_MOVE(Registration)
        QString name;
    };

    void open();
    void switchToWriteAheadLog();
    void set(const QString &setting, const QString &text, const QString &expected);
    QSqlQuery &start(QStringView sql, const QVariantList &values);
    [[noreturn]] void fail(QStringView sql, const QSqlError &error) const;

    QueueFile m_file;
    Registration m_registration;
    std::map<QStringView, QSqlQuery> m_statements;
};

/// Takes the write lock; rolls back on destruction unless commit() has succeeded.
class QueueTransaction
{
public:
    /// Throws BasicException when the lock is not to be had within the busy time-out.
    explicit QueueTransaction(QueueConnection &connection);
    ~QueueTransaction();
    Q_DISABLE_COPY_MOVE(QueueTransaction)

    /// Throws BasicException when the changes could not be stored; they are rolled back then.
    void commit();

private:
    QueueConnection &m_connection;
    bool m_open = true;
};
