// The queue's database file: where it is, who may read it, and whether it is still the one that was opened.
#pragma once

#include <sys/types.h>

#include <QtCore/QString>

/// The file is never opened here: closing any descriptor of a database file would drop the locks that SQLite holds on
/// it elsewhere in this process.
class QueueFile
{
public:
    explicit QueueFile(const QString &fileName);

    const QString &name() const { return m_name; }

    /// Makes the folder (mode 0700) and the empty file (0600) where they are missing. Throws BasicException when that
    /// fails.
    void prepare();

    /// Takes all rights to the file and its log away from everybody but the owner; where that fails, a warning is
    /// logged.
    void tighten() const;

    /// True when the name has been given to another file, or to none, since prepare().
    bool isReplaced() const;

private:
    void makeFolder(const QString &folder) const;
    void makeFile() const;

    QString m_name;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};
