// The open check on disk: one file, replaced as a whole.
#pragma once

#include <document/saledocument.h>
#include <poshost_export.h>

/// Keeps the open check in the file `open-check.json` of the folder "Host:dataFolder". Files have mode 0600; a write
/// replaces the old file in one step and is on the disk when save() returns.
class POSHOST_EXPORT DocumentStore
{
public:
    /// Uses the folder "Host:dataFolder" of the configuration (default: the working folder).
    DocumentStore();

    /// Uses `folder`; save() makes it, with mode 0700, when it does not exist.
    explicit DocumentStore(const QString &folder);

    /// The open check's file.
    QString openCheckFile() const;

    /// Writes the check to `fileName` (a relative name is one in the folder), or to openCheckFile() when that is empty.
    /// Throws BasicException that names the file and the reason; what was on the disk then stays.
    void save(const SaleDocument &document, const QString &fileName = {}) const;

    /// The check that was open; null when there is none. A file that cannot be understood is kept: throws
    /// BasicException that names the file and what is wrong with it.
    QSharedPointer<SaleDocument> restore() const;

    /// The check is no longer open. Throws BasicException when the file cannot be removed.
    void remove() const;

private:
    QString m_folder;
};
