// One connection to a database through Qt SQL: checked statements and transactions.
// Used on the thread that created it, and on no other.
#pragma once

#include "connectionwatchdog.h"

#include <QtCore/QStringView>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <functional>
#include <map>
#include <memory>

/// All operations throw BasicException when they fail.
class DatabaseConnection
{
public:
    enum class Commits {
        Synced, ///< On disk when commit() returns.
        Lazy,   ///< Survives the death of the process at once, a power failure after the next checkpoint. Never
                ///< checkpoints by itself.
    };

    /// What happens when the database does not exist.
    enum class IfMissing { Create, Fail };

    virtual ~DatabaseConnection() = default;
    Q_DISABLE_COPY_MOVE(DatabaseConnection)

    /// The name that error texts begin with: "Очередь запросов «/var/lib/kvo/queue.db»".
    const QString &title() const { return m_title; }

    /// Never given to another connection of this process.
    const QString &identifier() const { return m_registration.name; }

    /// Runs a statement and returns the number of rows it changed. The statement is prepared once and kept.
    int change(QStringView sql, const QVariantList &values = {});

    /// Runs a query and calls `row` for each row of its result. `row` must not use this connection.
    void read(QStringView sql, const QVariantList &values, const std::function<void(const QSqlQuery &)> &row);

    /// The first column of the first row; invalid when there is no row.
    QVariant value(QStringView sql, const QVariantList &values = {});

    /// Runs a statement that is needed once or cannot be prepared.
    void execute(QStringView sql);

    /// False when the connection must be replaced before anything else is done; the reason is logged.
    virtual bool isUsable() = 0;

    /// Makes lazy commits durable if the database would not do so soon by itself. Leaves what a reader or another
    /// process blocks for the next time.
    virtual void checkpoint() {}

protected:
    DatabaseConnection(const QString &driver, const QString &title);

    /// For DatabaseTransaction: begins a transaction that will write, and commits it.
    virtual void begin() = 0;
    virtual void commit() = 0;

    /// The error as a text for people, to follow the title.
    virtual QString problemText(const QSqlError &error) const = 0;

    /// Whether the error means that the file is damaged or not a database; fail() then throws UnusableDatabase.
    virtual bool isUnusable(const QSqlError &) const { return false; }

    /// From now on a statement that waits longer than `limit` for the server at `socket` ends the connection. To be
    /// called between statements.
    void watch(int socket, std::chrono::milliseconds limit);
    bool hasTimedOut() const { return m_watchdog && m_watchdog->hasExpired(); }

    /// Runs the watchdog for its lifetime. Does nothing without watch().
    class Waiting
    {
    public:
        explicit Waiting(DatabaseConnection &connection) : m_watchdog(connection.m_watchdog.get()) { restart(); }
        ~Waiting();
        Q_DISABLE_COPY_MOVE(Waiting)

        void restart();

    private:
        ConnectionWatchdog *m_watchdog;
    };

    QSqlDatabase database() const { return QSqlDatabase::database(m_registration.name, false); }

    /// Throws unless the query `question` yields `answer`: databases silently ignore some settings.
    void expect(QStringView question, QStringView answer);

    [[noreturn]] void fail(QStringView sql, const QSqlError &error) const;

private:
    friend class DatabaseTransaction;

    struct Registration
    {
        explicit Registration(const QString &driver);
        ~Registration();
        Q_DISABLE_COPY_MOVE(Registration)
        QString name;
    };

    QSqlQuery &start(QStringView sql, const QVariantList &values);

    QString m_title;
    // The statements are destroyed after their connection, so that a lost server is not asked to free them.
    std::map<QString, QSqlQuery, std::less<>> m_statements;
    Registration m_registration;
    std::unique_ptr<ConnectionWatchdog> m_watchdog;
};

/// Locks what it needs to write; rolls back on destruction unless commit() succeeded.
class DatabaseTransaction
{
public:
    /// Throws BasicException when the lock cannot be acquired in time.
    explicit DatabaseTransaction(DatabaseConnection &connection);
    ~DatabaseTransaction();
    Q_DISABLE_COPY_MOVE(DatabaseTransaction)

    /// Throws BasicException when the commit fails or is not answered; a server may have stored the changes all the
    /// same.
    void commit();

private:
    DatabaseConnection &m_connection;
    bool m_open = true;
};
