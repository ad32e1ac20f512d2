// The till's checks and its journal, in one database.
#pragma once

#include <document/saledocument.h>
#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

#include <memory>
#include <utility>

class CheckRows;
class SqliteConnection;

/// The file `checks.db` in the folder "Host:dataFolder": the current check, checks that were parked, and one journal
/// entry for each finished check. Every operation that writes is one transaction, on the disk when it returns; a save
/// writes only the rows that have changed, and nothing when none has. Used on one thread, as Singleton<CheckStore>.
///
/// Nothing is ever deleted because it cannot be read. A check that cannot be read stays in the store as Unreadable; a
/// file that is damaged, newer or another program's is renamed, and a new one begun. Both are logged and reported by
/// takeNotices().
///
/// Operations throw BasicException with a text for the cashier when they fail; what was stored then stays.
class POSHOST_EXPORT CheckStore
{
public:
    enum class Access {
        Work,
        Look, ///< Beside a working till: changes no check and puts no file aside. A store that is missing is empty.
    };
    /// Stored by its number.
    enum class Standing {
        Current,
        Parked,
        Unreadable,
        Ending, ///< Closed or voided, and parked because its requests are not queued yet; then only finish() is left.
    };

    struct KeptCheck
    {
        QString identifier;
        Standing standing;
        QString reason;  ///< Why it was parked, or what cannot be read.
        QDateTime since; ///< When it was opened or got this standing.
    };

    struct JournalEntry
    {
        QDateTime entered;
        QJsonObject entry;
    };

    /// Uses the folder "Host:dataFolder" (default: the working folder).
    CheckStore();
    /// Makes the folder, with mode 0700, when it is first written to.
    explicit CheckStore(const QString &folder, Access access = Access::Work);
    ~CheckStore();
    Q_DISABLE_COPY_MOVE(CheckStore)

    const QString &fileName() const { return m_fileName; }

    /// Saves the check, which becomes the current one; another check that was current is parked.
    void save(const SaleDocument &check);

    /// The current check; null when there is none, or when it cannot be read and so became Unreadable.
    QSharedPointer<SaleDocument> restore();

    /// Enters the finished check in the journal and removes it from the store. A check that is in the journal already
    /// is not entered again.
    void finish(const SaleDocument &check, const QJsonObject &entry);

    /// The current check, as it was saved, is parked, as Parked or Ending. False when the file has none.
    bool park(const QString &reason, Standing standing = Standing::Parked);

    /// A parked check, which stays as it is. Throws BasicException when there is no such parked check, or when it
    /// cannot be read and so became Unreadable.
    QSharedPointer<SaleDocument> parked(const QString &identifier);

    /// Makes a parked check the current one. Throws BasicException when there is another current check, and like
    /// parked().
    QSharedPointer<SaleDocument> resume(const QString &identifier);

    /// All checks in the store, the oldest first.
    QList<KeptCheck> checks();

    /// The entries made since then, the oldest first; all with an invalid time.
    QList<JournalEntry> journal(const QDateTime &since = {});

    /// What the cashier has to know about checks and files that were put aside since the last call.
    QStringList takeNotices() { return std::exchange(m_notices, {}); }

private:
    template <class Operation>
    auto attempt(Operation operation);
    SqliteConnection &connection();
    bool isMissing() const;
    void putFileAside(const QString &reason);
    void forget();
    qint64 makeCurrent(const QString &identifier);
    void write(const SaleDocument &check);
    QSharedPointer<SaleDocument> read(qint64 sale, const QString &identifier);
    QSharedPointer<SaleDocument> readParked(const QString &identifier);
    void setStanding(qint64 sale, Standing standing, const QString &reason);

    QString m_fileName;
    Access m_access;
    std::unique_ptr<SqliteConnection> m_connection;
    // What is stored of the check that was saved or read last.
    QString m_identifier;
    qint64 m_sale = 0;
    std::unique_ptr<CheckRows> m_rows;
    QStringList m_notices;
};
