// A database file: where it is, who may read it, and whether it is still the one that was opened.
#pragma once

#include <sys/types.h>

#include <QtCore/QString>

/// The file is never opened here: closing any descriptor of a database file would drop the locks that SQLite holds on
/// it elsewhere in this process.
class DatabaseFile
{
public:
    /// `what`: the database's name for people, "Очередь запросов".
    DatabaseFile(QStringView what, const QString &fileName);

    const QString &name() const { return m_name; }
    const QString &title() const { return m_title; } ///< See DatabaseConnection.

    /// Creates the folder (mode 0700) and an empty file (0600) if they are missing. Throws BasicException when that
    /// fails.
    void prepare();

    /// Leaves rights to the file and its log to the owner only; logs a warning where that fails.
    void tighten() const;

    /// True when the file is a single byte, which SQLite takes for an empty file and writes over. Power failures leave
    /// such a file only with its journal.
    bool isSingleByte() const;

    /// True when the file was deleted or replaced since prepare().
    bool isReplaced() const;

private:
    void makeFile() const;

    QString m_name;
    QString m_title;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};
