// Checks and journal in SQLite.
#include "checkstore.h"

#include "checkrows.h"

#include <core/basicexception.h>
#include <core/config.h>
#include <core/currenttime.h>
#include <core/jsontext.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <database/databaseerror.h>
#include <database/sqliteconnection.h>

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QScopeGuard>

#include <array>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

// A part's key is a number or a text; numbers sort before texts and by their value.
constexpr std::array<QStringView, 3> tables = {
    u"CREATE TABLE sale (id INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL UNIQUE, standing INTEGER NOT "
    u"NULL, since INTEGER NOT NULL, reason TEXT)",
    u"CREATE TABLE part (sale INTEGER NOT NULL, kind TEXT NOT NULL, key NOT NULL, content BLOB NOT NULL, "
    u"PRIMARY KEY (sale, kind, key)) WITHOUT ROWID",
    u"CREATE TABLE journal (id INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL UNIQUE, entered INTEGER NOT "
    u"NULL, entry TEXT NOT NULL)",
};
constexpr SqliteSchema schema{u"Чеки и журнал", u"Host:dataFolder", 0x506f7343, 1, tables};

constexpr QStringView saleOf = u"SELECT id FROM sale WHERE identifier = ?";
constexpr QStringView parkedSale = u"SELECT id FROM sale WHERE identifier = ? AND standing IN (?, ?)";
constexpr QStringView saleWithStanding = u"SELECT id, identifier FROM sale WHERE standing = ? ORDER BY id DESC LIMIT 1";

qint64 now()
{
    return MockFactory<CurrentTime>::create()->currentDateTime().toMSecsSinceEpoch();
}

int codeOf(CheckStore::Standing standing)
{
    return static_cast<int>(standing);
}

/// A name that no file has yet.
QString nameBeside(const QString &fileName)
{
    const QString name =
        fileName + u".aside-"_s + MockFactory<CurrentTime>::create()->currentDateTime().toString(u"yyyyMMdd-HHmmss");
    QString free = name;
    for (int number = 2; QFile::exists(free); ++number)
        free = name + u'-' + QString::number(number);
    return free;
}

} // namespace

CheckStore::CheckStore()
    : CheckStore(Singleton<Config>::instance()->getString(u"Host:dataFolder"_s, QDir::currentPath()))
{}

CheckStore::CheckStore(const QString &folder, Access access)
    : m_fileName(QDir(QDir(folder).absolutePath()).filePath(u"checks.db"_s)),
      m_access(access),
      m_rows(std::make_unique<CheckRows>())
{}

CheckStore::~CheckStore() = default;

// An operation that finds the file beyond use is repeated in a new one.
template <class Operation>
auto CheckStore::attempt(Operation operation)
{
    try {
        return operation();
    } catch (const UnusableDatabase &error) {
        if (m_access == Access::Look)
            throw;
        putFileAside(error.text().ru());
        return operation();
    }
}

SqliteConnection &CheckStore::connection()
{
    if (m_connection && !m_connection->isUsable()) {
        m_connection.reset();
        forget();
    }
    if (!m_connection) {
        const auto ifMissing =
            m_access == Access::Work ? DatabaseConnection::IfMissing::Create : DatabaseConnection::IfMissing::Fail;
        m_connection =
            std::make_unique<SqliteConnection>(schema, m_fileName, DatabaseConnection::Commits::Synced, ifMissing);
    }
    return *m_connection;
}

bool CheckStore::isMissing() const
{
    return m_access == Access::Look && !QFile::exists(m_fileName);
}

void CheckStore::putFileAside(const QString &reason)
{
    m_connection.reset();
    forget();
    const QString aside = nameBeside(m_fileName);
    for (const QString &suffix : {u"-wal"_s, u"-shm"_s, QString()}) { // a log without its file is of no use
        QFile file(m_fileName + suffix);
        if (file.exists() && !file.rename(aside + suffix))
            throw BasicException(u"%1. Файл не удалось отложить: %2"_s.arg(reason, file.errorString()));
    }
    m_notices.append(
        u"%1. Файл отложен под именем «%2», сообщите об этом в поддержку. Можно продавать дальше"_s.arg(reason, aside));
    databaseerror::logger()->error(m_notices.last());
}

void CheckStore::forget()
{
    m_identifier.clear();
    m_sale = 0;
    *m_rows = {};
}

void CheckStore::save(const SaleDocument &check)
{
    attempt([&] { write(check); });
}

void CheckStore::write(const SaleDocument &check)
{
    SqliteConnection &database = connection();
    if (m_identifier != check.getIdentifier())
        forget();
    auto forgetOnFailure = qScopeGuard([this] { forget(); });
    const CheckRows::Changes changes = m_rows->update(check);
    if (!changes.removed.isEmpty() || !changes.written.isEmpty()) {
        DatabaseTransaction transaction(database);
        if (m_sale == 0)
            m_sale = makeCurrent(check.getIdentifier());
        for (const CheckRow &row : changes.removed)
            database.change(u"DELETE FROM part WHERE sale = ? AND kind = ? AND key = ?", {m_sale, row.kind, row.key});
        for (const CheckRow &row : changes.written)
            database.change(u"INSERT INTO part (sale, kind, key, content) VALUES (?, ?, ?, ?) "
                            u"ON CONFLICT (sale, kind, key) DO UPDATE SET content = excluded.content",
                            {m_sale, row.kind, row.key, row.content});
        transaction.commit();
        m_identifier = check.getIdentifier();
    }
    forgetOnFailure.dismiss();
}

/// Makes the check the current one, with no parts stored yet. Returns the id of its sale.
qint64 CheckStore::makeCurrent(const QString &identifier)
{
    SqliteConnection &database = *m_connection;
    database.change(u"UPDATE sale SET standing = ?, since = ?, reason = ? WHERE standing = ? AND identifier <> ?",
                    {codeOf(Standing::Parked), now(), u"Начат другой чек"_s, codeOf(Standing::Current), identifier});
    database.change(u"INSERT INTO sale (identifier, standing, since) VALUES (?, ?, ?) "
                    u"ON CONFLICT (identifier) DO UPDATE SET standing = excluded.standing, reason = NULL, "
                    u"since = CASE WHEN sale.standing = excluded.standing THEN sale.since ELSE excluded.since END",
                    {identifier, codeOf(Standing::Current), now()});
    const qint64 sale = database.value(saleOf, {identifier}).toLongLong();
    database.change(u"DELETE FROM part WHERE sale = ?", {sale});
    return sale;
}

QSharedPointer<SaleDocument> CheckStore::restore()
{
    if (isMissing())
        return nullptr;
    return attempt([&]() -> QSharedPointer<SaleDocument> {
        qint64 sale = 0;
        QString identifier;
        connection().read(saleWithStanding, {codeOf(Standing::Current)}, [&](const QSqlQuery &row) {
            sale = row.value(0).toLongLong();
            identifier = row.value(1).toString();
        });
        return sale == 0 ? nullptr : read(sale, identifier);
    });
}

// Null when the check cannot be read.
QSharedPointer<SaleDocument> CheckStore::read(qint64 sale, const QString &identifier)
{
    QList<CheckRow> rows;
    connection().read(u"SELECT kind, key, content FROM part WHERE sale = ? ORDER BY kind, key", {sale},
                      [&rows](const QSqlQuery &row) {
                          rows.append({row.value(0).toString(), row.value(1), row.value(2).toByteArray()});
                      });
    try {
        auto check = m_rows->read(rows);
        if (check->getIdentifier() != identifier)
            throw BasicException(u"запись «check», поле «identifier»: ожидается "_s + identifier);
        m_identifier = identifier;
        m_sale = sale;
        return check;
    } catch (const BasicException &error) {
        forget();
        if (m_access == Access::Work)
            setStanding(sale, Standing::Unreadable, error.text().ru());
        m_notices.append(
            u"Сохранённый чек %1 не читается: %2. Сообщите об этом в поддержку. Можно начать новый чек"_s.arg(
                identifier, error.text().ru()));
        databaseerror::logger()->error(m_notices.last());
        return nullptr;
    }
}

void CheckStore::setStanding(qint64 sale, Standing standing, const QString &reason)
{
    connection().change(u"UPDATE sale SET standing = ?, since = ?, reason = ? WHERE id = ?",
                        {codeOf(standing), now(), reason, sale});
}

void CheckStore::finish(const SaleDocument &check, const QJsonObject &entry)
{
    attempt([&] {
        SqliteConnection &database = connection();
        DatabaseTransaction transaction(database);
        const QString identifier = check.getIdentifier();
        const QByteArray text = jsontext::compact(QJsonDocument(entry));
        database.change(u"INSERT INTO journal (identifier, entered, entry) VALUES (?, ?, ?) "
                        u"ON CONFLICT (identifier) DO NOTHING",
                        {identifier, now(), QString::fromUtf8(text)});
        database.change(u"DELETE FROM part WHERE sale IN (SELECT id FROM sale WHERE identifier = ?)", {identifier});
        database.change(u"DELETE FROM sale WHERE identifier = ?", {identifier});
        transaction.commit();
    });
    forget();
}

bool CheckStore::park(const QString &reason, Standing standing)
{
    const int parked = attempt([&] {
        return connection().change(u"UPDATE sale SET standing = ?, since = ?, reason = ? WHERE standing = ?",
                                   {codeOf(standing), now(), reason, codeOf(Standing::Current)});
    });
    forget();
    return parked > 0;
}

QSharedPointer<SaleDocument> CheckStore::readParked(const QString &identifier)
{
    return attempt([&] {
        const qint64 sale = connection()
                                .value(parkedSale, {identifier, codeOf(Standing::Parked), codeOf(Standing::Ending)})
                                .toLongLong();
        if (sale == 0)
            throw BasicException(u"Отложенного чека %1 нет или он не читается"_s.arg(identifier));
        auto check = read(sale, identifier);
        if (!check)
            throw BasicException(m_notices.takeLast());
        return check;
    });
}

QSharedPointer<SaleDocument> CheckStore::parked(const QString &identifier)
{
    auto check = readParked(identifier);
    forget(); // When it is saved, it has to become the current one.
    return check;
}

QSharedPointer<SaleDocument> CheckStore::resume(const QString &identifier)
{
    if (attempt([&] { return connection().value(saleWithStanding, {codeOf(Standing::Current)}); }).isValid())
        throw BasicException(u"Есть открытый чек. Сначала закройте или отложите его"_s);
    auto check = readParked(identifier);
    setStanding(m_sale, Standing::Current, {});
    return check;
}

QList<CheckStore::KeptCheck> CheckStore::checks()
{
    QList<KeptCheck> kept;
    if (isMissing())
        return kept;
    return attempt([&] {
        kept.clear();
        connection().read(
            u"SELECT identifier, standing, reason, since FROM sale ORDER BY id", {}, [&kept](const QSqlQuery &row) {
                kept.append({row.value(0).toString(), static_cast<Standing>(row.value(1).toInt()),
                             row.value(2).toString(), QDateTime::fromMSecsSinceEpoch(row.value(3).toLongLong())});
            });
        return kept;
    });
}

QList<CheckStore::JournalEntry> CheckStore::journal(const QDateTime &since)
{
    QList<JournalEntry> entries;
    if (isMissing())
        return entries;
    return attempt([&] {
        entries.clear();
        connection().read(u"SELECT entered, entry FROM journal WHERE entered >= ? ORDER BY id",
                          {since.isValid() ? since.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min()},
                          [&entries](const QSqlQuery &row) {
                              entries.append({QDateTime::fromMSecsSinceEpoch(row.value(0).toLongLong()),
                                              QJsonDocument::fromJson(row.value(1).toString().toUtf8()).object()});
                          });
        return entries;
    });
}
