// Looks into the queue beside a till that may be working with it.
#include "doctorqueue.h"

#include "doctorhost.h"

#include <core/basicexception.h>
#include <queue/queueadmin.h>
#include <queue/queuesettings.h>

#include <QtCore/QFileInfo>

#include <algorithm>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

namespace {

using Entries = QList<QueueAdmin::Entry>;
using State = QueueAdmin::State;

constexpr qint64 longWaitSeconds = 3600;

Finding checkQueue(Entries &entries)
{
    const QueueSettings settings = QueueSettings::configured();
    if (settings.driver == QueueSettings::Driver::Sqlite && !QFileInfo::exists(settings.database))
        return {Verdict::Ok, u"%1 does not exist yet, it is made with the first request"_s.arg(settings.database)};
    try {
        entries = QueueAdmin().list();
    } catch (const BasicException &error) {
        return {
            Verdict::Failure, u"%1 cannot be used"_s.arg(settings.name()),
            u"Correct the section [Queue] or mend the database, see docs/queue.md; keep the file, requests are in it"_s,
            error.text().ru()};
    }
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
        return {Verdict::Ok, u"%1: nothing waits"_s.arg(settings.name())};
    const QString found = u"%1: %2 wait, the oldest since %3"_s.arg(settings.name(), QString::number(waiting),
                                                                    oldest.toString(Qt::ISODate));
    if (oldest.secsTo(QDateTime::currentDateTime()) > longWaitSeconds)
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

} // namespace

QList<Check> queueChecks()
{
    const auto entries = std::make_shared<Entries>();
    return {
        {u"queue"_s, configurationCheck, [entries] { return checkQueue(*entries); }},
        {u"refused requests"_s, u"queue"_s, [entries] { return checkRefused(*entries); }},
    };
}

} // namespace till::doctor
