// The ledger's database file and its transactions. There is one connection, for one request at a time: answers depend
// on balances, so requests are serial anyway.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <filesystem>
#include <mutex>
#include <utility>

namespace sim {

/// Thread-safe through read() and write().
class Database
{
public:
    enum class Access {
        Serve,  ///< created if missing, writable; its mode becomes 0600
        Inspect ///< must exist, read-only; works beside a serving process
    };

    /// Throws std::runtime_error naming the file if it cannot be opened or is not a ledger of this program.
    Database(const std::filesystem::path &file, Access access);

    /// Runs the step in one transaction, which is durable when this returns, and rolled back if the step throws.
    template <typename Step>
    auto write(Step step)
    {
        const std::scoped_lock lock(m_mutex);
        SQLite::Transaction transaction(m_connection, SQLite::TransactionBehavior::IMMEDIATE);
        auto result = step(m_connection);
        transaction.commit();
        return result;
    }

    /// Runs the step on a consistent state of the file.
    template <typename Step>
    auto read(Step step)
    {
        const std::scoped_lock lock(m_mutex);
        const SQLite::Transaction transaction(m_connection);
        return step(m_connection);
    }

    /// The number of rows this object has changed; if it is the same, so is the ledger.
    int changes()
    {
        const std::scoped_lock lock(m_mutex);
        return m_connection.getTotalChanges();
    }

private:
    std::mutex m_mutex;
    SQLite::Database m_connection;
};

/// A statement with its values bound in order.
template <typename... Values>
SQLite::Statement prepare(const SQLite::Database &database, const char *sql, const Values &...values)
{
    SQLite::Statement statement(database, sql);
    if constexpr (sizeof...(values) > 0)
        SQLite::bind(statement, values...);
    return statement;
}

/// Runs a statement that returns no rows; the number of rows changed.
template <typename... Values>
int execute(const SQLite::Database &database, const char *sql, const Values &...values)
{
    return prepare(database, sql, values...).exec();
}

} // namespace sim
