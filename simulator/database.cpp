// Opens the ledger file and creates its schema.
#include "database.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace sim {

namespace {

constexpr int applicationId = 0x4C53494D; // marks the file as this program's
constexpr int schemaVersion = 2;
constexpr int busyMilliseconds = 5000;

// points of a line: offered while calculated, reserved while created, spent once posted; otherwise 0.
constexpr const char *schema = R"(
CREATE TABLE customers (
    account TEXT PRIMARY KEY, last_name TEXT NOT NULL, first_name TEXT NOT NULL, middle_name TEXT NOT NULL,
    birth_date TEXT NOT NULL, gender INTEGER NOT NULL, email TEXT NOT NULL, phone TEXT NOT NULL UNIQUE,
    balance INTEGER NOT NULL CHECK (balance >= 0)) STRICT;
CREATE TABLE cards (
    number TEXT PRIMARY KEY, account TEXT NOT NULL REFERENCES customers, position INTEGER NOT NULL) STRICT;
CREATE INDEX cards_by_account ON cards (account);
CREATE TABLE tiers (
    account TEXT NOT NULL REFERENCES customers, position INTEGER NOT NULL, name TEXT NOT NULL,
    discount INTEGER NOT NULL, PRIMARY KEY (account, position)) STRICT;
CREATE TABLE orders (
    basket TEXT PRIMARY KEY, account TEXT NOT NULL REFERENCES customers, card TEXT NOT NULL REFERENCES cards,
    state TEXT NOT NULL CHECK (state IN ('calculated', 'created', 'updated', 'posted', 'bound', 'cancelled')),
    body TEXT NOT NULL, order_id TEXT, earned INTEGER NOT NULL CHECK (earned >= 0), changed_at TEXT NOT NULL) STRICT;
CREATE INDEX orders_by_order_id ON orders (order_id);
CREATE TABLE order_lines (
    basket TEXT NOT NULL REFERENCES orders, position INTEGER NOT NULL, line_id INTEGER NOT NULL,
    amount INTEGER NOT NULL, payment_discount INTEGER NOT NULL, points INTEGER NOT NULL CHECK (points >= 0),
    PRIMARY KEY (basket, position)) STRICT;
CREATE TABLE order_steps (
    id INTEGER PRIMARY KEY AUTOINCREMENT, basket TEXT NOT NULL REFERENCES orders, state TEXT NOT NULL,
    amount INTEGER NOT NULL, points INTEGER NOT NULL, earned INTEGER NOT NULL, at TEXT NOT NULL) STRICT;
CREATE INDEX order_steps_by_basket ON order_steps (basket);
CREATE TABLE movements (
    id INTEGER PRIMARY KEY AUTOINCREMENT, account TEXT NOT NULL REFERENCES customers, basket TEXT REFERENCES orders,
    kind TEXT NOT NULL CHECK (kind IN ('opening', 'adjust', 'reserve', 'release', 'spend', 'earn')),
    points INTEGER NOT NULL, at TEXT NOT NULL) STRICT;
CREATE INDEX movements_by_account ON movements (account);
CREATE INDEX movements_by_basket ON movements (basket);
CREATE TABLE messages (
    id INTEGER PRIMARY KEY AUTOINCREMENT, at TEXT NOT NULL, brand TEXT NOT NULL, phone TEXT NOT NULL,
    text TEXT NOT NULL) STRICT;
)";

/// A file that exists keeps its mode: it may be another program's.
void createPrivately(const std::filesystem::path &file)
{
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        throw std::runtime_error("cannot be opened for writing: " + std::generic_category().message(errno));
    ::close(descriptor);
}

/// For phones and card numbers. SQLite gives new side files the mode of the main file.
void makePrivate(const std::filesystem::path &file)
{
    for (const char *suffix : {"", "-wal", "-shm"}) {
        const std::filesystem::path each = file.string() + suffix;
        if (std::filesystem::exists(each))
            std::filesystem::permissions(each, std::filesystem::perms(S_IRUSR | S_IWUSR));
    }
}

SQLite::Database open(const std::filesystem::path &file, Database::Access access)
{
    if (access == Database::Access::Serve)
        createPrivately(file);
    else if (!std::filesystem::exists(file))
        throw std::runtime_error("no such file");
    return {file.string(), access == Database::Access::Serve ? SQLite::OPEN_READWRITE : SQLite::OPEN_READONLY,
            busyMilliseconds};
}

int number(SQLite::Database &connection, const char *sql)
{
    return connection.execAndGet(sql).getInt();
}

void createSchema(SQLite::Database &connection)
{
    SQLite::Transaction transaction(connection, SQLite::TransactionBehavior::IMMEDIATE);
    if (number(connection, "SELECT count(*) FROM sqlite_schema") > 0)
        return;
    connection.exec(schema);
    connection.exec("PRAGMA application_id = " + std::to_string(applicationId) +
                    "; PRAGMA user_version = " + std::to_string(schemaVersion) + ";");
    transaction.commit();
}

void checkOwner(SQLite::Database &connection)
{
    if (number(connection, "PRAGMA application_id") != applicationId)
        throw std::runtime_error("not a ledger of loyalty-sim");
    if (number(connection, "PRAGMA user_version") != schemaVersion)
        throw std::runtime_error("written by another version of loyalty-sim; use a new file");
}

/// WAL with FULL: an answered request survives a power cut, and readers do not stop the server.
void makeDurable(SQLite::Database &connection)
{
    if (connection.execAndGet("PRAGMA journal_mode = WAL").getString() != "wal")
        throw std::runtime_error("the file system does not allow a write-ahead log");
    connection.exec("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
}

} // namespace

Database::Database(const std::filesystem::path &file, Access access)
try : m_connection(open(file, access)) {
    if (access == Access::Serve)
        createSchema(m_connection);
    checkOwner(m_connection);
    if (access == Access::Serve) {
        makePrivate(file);
        makeDurable(m_connection);
    }
} catch (const std::runtime_error &error) {
    throw std::runtime_error(file.string() + ": " + error.what());
}

} // namespace sim
