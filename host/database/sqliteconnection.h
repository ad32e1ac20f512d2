// A database in a file of its own.
#pragma once

#include "databaseconnection.h"
#include "databasefile.h"

#include <optional>
#include <span>

/// What a program expects of its file.
struct SqliteSchema
{
    QStringView what;                        ///< Its name for people, "Очередь запросов".
    QStringView settings;                    ///< What names the file, for error texts: "Queue:database".
    int applicationId;                       ///< Tells our databases from each other and from those of other programs.
    int version;                             ///< From 1.
    std::span<const QStringView> statements; ///< Create the tables.
    /// How long the log may grow before a synced commit checkpoints, in 4 KiB. By default SQLite decides.
    std::optional<int> pagesBeforeCheckpoint = {};
};

/// Write-ahead log, durable commits, file mode 0600. Safe against other threads and processes that open the same file,
/// each with a connection of its own.
class SqliteConnection final : public DatabaseConnection
{
public:
    /// Opens the file; creates folder, file and tables if they are missing and may be made. Throws BasicException when
    /// that fails, or when the file is damaged, was written by a newer version or belongs to another program; it is
    /// left as it is then.
    SqliteConnection(const SqliteSchema &schema, const QString &fileName, Commits commits,
                     IfMissing ifMissing = IfMissing::Create);

    /// The file's absolute name.
    const QString &fileName() const { return m_file.name(); }

    /// False when the file was deleted or replaced while it was open: what is stored from now on would be lost.
    bool isUsable() override;

    /// Carries the write-ahead log into the database.
    void checkpoint() override;

protected:
    void begin() override { change(u"BEGIN IMMEDIATE"); }
    void commit() override { change(u"COMMIT"); }
    QString problemText(const QSqlError &error) const override;
    bool isUnusable(const QSqlError &error) const override;

private:
    void configure(Commits commits);
    void switchToWriteAheadLog();
    int foundVersion();
    void makeTables();

    const SqliteSchema &m_schema;
    DatabaseFile m_file;
};
