// Looks into the queue and the check store beside a till that may be working with them.
#include "doctorstore.h"

#include "doctorhost.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <database/databaseerror.h>
#include <queue/dbqueuebroker.h>
#include <queue/queueadmin.h>
#include <queue/queuesettings.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

namespace {

using Entries = QList<QueueAdmin::Entry>;
using KeptChecks = QList<CheckStore::KeptCheck>;
using State = QueueAdmin::State;

using Standing = CheckStore::Standing;

constexpr qint64 longWaitSeconds = 3600;

/// Also of what a clock that was ahead has put into the future.
bool isLongAgo(const QDateTime &time)
{
    return std::abs(time.secsTo(QDateTime::currentDateTime())) > longWaitSeconds;
}

/// A database that can be read but not written to, as after a backup was copied back by another user.
std::optional<Finding> readOnly(const QString &database)
{
    for (const QString &suffix : {QString(), u"-wal"_s, u"-shm"_s}) {
        if (const QFileInfo file(database + suffix); file.exists() && !file.isWritable())
            return Finding{Verdict::Failure, u"%1 cannot be written"_s.arg(file.filePath()),
                           u"Give it to the user of the till, and its -wal and -shm as well"_s};
    }
    return std::nullopt;
}

/// A queue that can be read, but takes no requests.
std::optional<Finding> unwritable(const QueueSettings &settings)
{
    if (settings.driver == QueueSettings::Driver::Sqlite)
        return readOnly(settings.database);
    const QString problem = DBQueueBroker().problem();
    if (problem.isEmpty())
        return std::nullopt;
    return Finding{Verdict::Failure, u"nothing can be stored on %1"_s.arg(settings.name()),
                   u"The till takes no cards until the server does; see docs/queue.md"_s, problem};
}

Finding checkQueue(Entries &entries)
{
    QueueSettings settings;
    try {
        settings = QueueSettings::configured();
        entries = QueueAdmin().list();
    } catch (const MissingDatabase &) {
        if (settings.driver == QueueSettings::Driver::Sqlite) {
            const Finding folder = checkFolder(QFileInfo(settings.database).absolutePath(), u"Queue:database"_s);
            if (folder.verdict == Verdict::Failure)
                return folder;
        }
        return {Verdict::Ok, u"%1 does not exist yet, it is made with the first request"_s.arg(settings.name())};
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"the queue %1 cannot be used"_s.arg(settings.name()),
                u"Correct the section [Queue] or repair the database, see docs/queue.md; keep the file, it holds "
                u"requests"_s,
                error.text().ru()};
    }
    if (const auto finding = unwritable(settings))
        return *finding;
    int waiting = 0;
    QDateTime oldest;
    for (const QueueAdmin::Entry &entry : std::as_const(entries)) {
        if (entry.state != State::Waiting && entry.state != State::Sending)
            continue;
        ++waiting;
        if (!oldest.isValid() || entry.stored < oldest)
            oldest = entry.stored;
    }
    if (waiting == 0)
        return {Verdict::Ok, u"%1: nothing is waiting"_s.arg(settings.name())};
    const QString found = u"%1: %2 waiting, the oldest since %3"_s.arg(settings.name(), QString::number(waiting),
                                                                       oldest.toString(Qt::ISODate));
    if (isLongAgo(oldest))
        return {Verdict::Warning, found, u"Send them with kvo-till drain; kvo-till queue says what keeps them"_s};
    return {Verdict::Ok, found};
}

Finding checkRefused(const Entries &entries)
{
    const auto refused = std::count_if(entries.cbegin(), entries.cend(),
                                       [](const QueueAdmin::Entry &entry) { return entry.state == State::DeadLetter; });
    if (refused == 0)
        return {Verdict::Ok, u"none"_s};
    return {Verdict::Warning, u"%1 refused for good"_s.arg(refused),
            u"kvo-till queue says why; then kvo-till queue retry or discard"_s};
}

Finding checkOpen(KeptChecks &checks)
{
    CheckStore store(dataFolder(), CheckStore::Access::Look);
    try {
        checks = store.checks();
        store.restore();
    } catch (const BasicException &error) {
        return {
            Verdict::Failure, u"%1 cannot be read"_s.arg(store.fileName()),
            u"Remove the cause that follows. A damaged file is put aside at the next start of the till; keep it for "
            u"support"_s,
            error.text().ru()};
    }
    if (const auto finding = readOnly(store.fileName()))
        return *finding;
    if (const QStringList notices = store.takeNotices(); !notices.isEmpty())
        return {Verdict::Failure, u"the open check in %1 cannot be read"_s.arg(store.fileName()),
                u"Keep it for support; the next start of the till puts it aside and begins anew"_s,
                notices.join(u'\n')};
    const auto open = std::find_if(checks.cbegin(), checks.cend(), [](const CheckStore::KeptCheck &check) {
        return check.standing == Standing::Current;
    });
    if (open == checks.cend())
        return {Verdict::Ok, u"none"_s};
    const QString found = u"%1, since %2"_s.arg(open->identifier, open->since.toString(Qt::ISODate));
    if (isLongAgo(open->since))
        return {Verdict::Warning, found, u"Finish it with kvo-till sell, or void it with kvo-till void"_s};
    return {Verdict::Ok, found};
}

Finding checkAside(const KeptChecks &checks)
{
    QStringList parked;
    QStringList unreadable;
    QStringList waiting;
    for (const CheckStore::KeptCheck &check : checks) {
        if (check.standing == Standing::Ending)
            waiting.append(check.identifier);
        else if (check.standing == Standing::Parked)
            parked.append(u"%1 (%2)"_s.arg(check.identifier, check.reason));
        else if (check.standing == Standing::Unreadable)
            unreadable.append(u"%1 (%2)"_s.arg(check.identifier, check.reason));
    }
    if (!waiting.isEmpty())
        return {Verdict::Warning,
                u"closed, but their requests are not on the queue yet: %1"_s.arg(waiting.join(u", "_s)),
                u"Mend the queue, and start the till if it is not running"_s};
    const QStringList damaged = QDir(dataFolder()).entryList({u"checks.db.aside-*[0-9]"_s}, QDir::Files);
    if (!damaged.isEmpty())
        return {Verdict::Warning, u"whole files: %1"_s.arg(damaged.join(u", "_s)),
                u"Send them to support, with checks and journal in them; then take them out of the data folder"_s};
    if (!unreadable.isEmpty())
        return {Verdict::Warning, u"cannot be read: %1"_s.arg(unreadable.join(u", "_s)),
                u"Send checks.db to support; their goods have to be entered again"_s};
    if (!parked.isEmpty())
        return {Verdict::Ok, u"to be taken up again: %1"_s.arg(parked.join(u", "_s))};
    return {Verdict::Ok, u"none"_s};
}

} // namespace

QList<Check> storeChecks()
{
    const auto entries = std::make_shared<Entries>();
    const auto checks = std::make_shared<KeptChecks>();
    return {
        {u"queue"_s, configurationCheck, [entries] { return checkQueue(*entries); }},
        {u"refused requests"_s, u"queue"_s, [entries] { return checkRefused(*entries); }},
        {u"open check"_s, configurationCheck, [checks] { return checkOpen(*checks); }},
        {u"checks put aside"_s, u"open check"_s, [checks] { return checkAside(*checks); }},
    };
}

} // namespace till::doctor
