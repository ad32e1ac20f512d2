// The host's configuration: an INI file, read once.
#pragma once

#include <poshost_export.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

/// Values by key. The key "Kvo:host" is the entry `host` of the section `[Kvo]`; keys are case-sensitive. A value is
/// the text after "=", trimmed, taken literally (no escapes, no lists); one pair of double quotes around it is removed.
/// The last of several entries with the same key wins. Thread-safe after construction.
class POSHOST_EXPORT Config
{
public:
    /// One line of the file.
    struct Entry
    {
        QString section; ///< Empty before the first section.
        QString name;
        QString value;
        int line = 0; ///< Counted from 1.

        QString key() const { return section.isEmpty() ? name : section + u':' + name; }
    };

    /// An empty configuration: every read returns its default.
    Config() = default;

    /// Reads `fileName` (UTF-8). Throws BasicException that names the file if it cannot be read, and file and line if a
    /// line is not UTF-8 or is no section, entry, comment (";" or "#") or blank line.
    explicit Config(const QString &fileName);

    virtual ~Config() = default;

    /// The configured text, which may be empty; `defaultValue` if the key is missing.
    virtual QString getString(const QString &key, const QString &defaultValue) const;

    /// The configured number; `defaultValue` if the key is missing, or, with a warning that names the key, if the text
    /// is not a whole number.
    virtual int getInt(const QString &key, int defaultValue) const;

    /// The same for a finite number with an optional fraction; the decimal separator is a point in every locale.
    virtual double getDouble(const QString &key, double defaultValue) const;

    /// The name of the file; empty for an empty configuration.
    const QString &fileName() const { return m_fileName; }

    /// All entries in the order of the file.
    const QList<Entry> &entries() const { return m_entries; }

private:
    bool readLine(const QString &line, Entry &entry);

    QString m_fileName;
    QList<Entry> m_entries;
    QHash<QString, QString> m_values;
};
