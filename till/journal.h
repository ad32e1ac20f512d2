// The till's books: one line of JSON for each finished check.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace till {

/// A file of JSON lines, mode 0600. A line counts once its line end is on the disk: what stands behind the last line
/// end is the rest of a write that was cut short, whose check is still kept as the open check.
class Journal
{
public:
    explicit Journal(const QString &fileName);

    /// Writes the check's line; on the disk when it returns. A check that is in the journal already is left as it
    /// stands, so that a check may be entered again after a crash. Throws BasicException that names the file and the
    /// reason when the file cannot be read or written.
    void enter(const QJsonObject &check);

    const QString &fileName() const { return m_fileName; }

private:
    QString m_fileName;
};

} // namespace till
