// One connection to the queue's database through Qt SQL: checked statements and transactions, and behind them what the
// kinds of database do each in their own way. Used on the thread that has made it, and on no other.
#pragma once

#include "queuesettings.h"

#include <QtCore/QStringView>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <functional>
#include <map>
#include <memory>

class QueueLease;

class QueueConnection
{
public:
    enum class Commits {
        Synced, ///< On the disk when commit() returns.
        Lazy,   ///< Survives the death of the process at once, a power failure from the next checkpoint on. No
                ///< checkpoints of its own accord.
    };
    enum class Missing { IsMade, IsRefused };

    /// Opens the queue; `missing`: what becomes of one that is not there. Throws BasicException when that fails, as all
    /// operations here do, or when this program must not write to what is there.
    static std::unique_ptr<QueueConnection> open(const QueueSettings &settings, Commits commits, Missing missing);
    virtual ~QueueConnection() = default;
    Q_DISABLE_COPY_MOVE(QueueConnection)

    /// What people know the database by.
    const QString &name() const { return m_name; }

    /// Never given to another connection of this process.
    const QString &identifier() const { return m_registration.name; }

    /// Runs a statement; returns how many rows it has changed. `sql` is prepared once and kept: the text must live as
    /// long as the connection.
    int change(QStringView sql, const QVariantList &values = {});

    /// Runs a query and calls `row` for each row of its result. `row` must not use this connection.
    void read(QStringView sql, const QVariantList &values, const std::function<void(const QSqlQuery &)> &row);

    /// The first column of the first row; invalid when there is no row.
    QVariant value(QStringView sql, const QVariantList &values = {});

    /// Runs, without preparing it, what runs once or cannot be prepared.
    void execute(QStringView sql);

    /// False when the connection has to be made anew before anything else is done; logged.
    virtual bool isUsable() = 0;

    /// Makes lazy commits durable where the database does not do so soon enough by itself. What a reader or another
    /// process stands in the way of is left for the next time.
    virtual void checkpoint() {}

    virtual std::unique_ptr<QueueLease> newLease() const = 0;

    /// A transaction that will write, see QueueTransaction.
    virtual void begin() = 0;
    virtual void commit() = 0;

    /// What the query for the next event says so that two drains do not find the same one.
    virtual QStringView rowLock() const = 0;

    /// The column with an event's text as a query names it so that it comes as UTF-8 where the driver can do that.
    virtual QStringView eventColumn() const { return u"e.event"; }

protected:
    QueueConnection(const QString &driver, const QString &name);

    virtual void open(Commits commits, Missing missing) = 0;

    /// The error as a text for people that completes the sentence of queueerror::make().
    virtual QString problemText(const QSqlError &error) const = 0;

    QSqlDatabase database() const { return QSqlDatabase::database(m_registration.name, false); }

    /// A setting that the database does not accept is not always an error to it: throws BasicException when the answer
    /// to `question` is another one.
    void expect(QStringView question, QStringView answer);

    [[noreturn]] void fail(QStringView sql, const QSqlError &error) const;

private:
    friend class QueueTransaction;

    struct Registration
    {
        explicit Registration(const QString &driver);
        ~Registration();
        Q_DISABLE_COPY_MOVE(Registration)
        QString name;
    };

    QSqlQuery &start(QStringView sql, const QVariantList &values);

    QString m_name;
    // In this order: the statements go with their connection, so that a server that is gone is not asked to free them.
    std::map<QStringView, QSqlQuery> m_statements;
    Registration m_registration;
};

/// Locks what it needs to write; rolls back on destruction unless commit() has succeeded.
class QueueTransaction
{
public:
    /// Throws BasicException when the database is not to be had within the busy time-out.
    explicit QueueTransaction(QueueConnection &connection);
    ~QueueTransaction();
    Q_DISABLE_COPY_MOVE(QueueTransaction)

    /// Throws BasicException when the changes could not be stored; they are rolled back then.
    void commit();

private:
    QueueConnection &m_connection;
    bool m_open = true;
};
