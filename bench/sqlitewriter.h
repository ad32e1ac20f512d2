// One prepared statement of SQLite's C interface, with the durability of the till's own files.
#pragma once

#include "pairs.h"

#include <sqlite3.h>

#include <QtCore/QFile>

#include <concepts>

namespace bench {

class SqliteWriter
{
public:
    explicit SqliteWriter(const QString &file)
    {
        require(sqlite3_open(QFile::encodeName(file).constData(), &m_database) == SQLITE_OK, "SQLite: not opened");
        run("PRAGMA journal_mode = WAL");
        run("PRAGMA synchronous = FULL");
    }
    ~SqliteWriter()
    {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_database);
    }
    Q_DISABLE_COPY_MOVE(SqliteWriter)

    void run(const char *sql)
    {
        require(sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) == SQLITE_OK, "SQLite: statement failed");
    }

    /// Once: what write() is to do.
    void prepare(const char *sql)
    {
        require(sqlite3_prepare_v2(m_database, sql, -1, &m_statement, nullptr) == SQLITE_OK, "SQLite: not prepared");
    }

    /// Runs the prepared statement with these values, texts or whole numbers, in its places.
    void write(const auto &...values)
    {
        int place = 0;
        (bind(++place, values), ...);
        require(sqlite3_step(m_statement) == SQLITE_DONE, "SQLite: row not written");
        sqlite3_reset(m_statement);
    }

private:
    void bind(int place, const QByteArray &text)
    {
        sqlite3_bind_text(m_statement, place, text.constData(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
    void bind(int place, std::integral auto number) { sqlite3_bind_int64(m_statement, place, number); }

    sqlite3 *m_database = nullptr;
    sqlite3_stmt *m_statement = nullptr;
};

} // namespace bench
