// What the cashier looks at beside the check: parked checks, the queue, the journal, receipts.
#include "checkdeskparts.h"
#include "listings.h"
#include "till/receipt.h"

#include <core/basicexception.h>
#include <core/singleton.h>
#include <queue/queueadmin.h>

#include <QtCore/QDir>
#include <QtCore/QSaveFile>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// The day's finished checks.
QList<CheckResult> today()
{
    QList<CheckResult> finished;
    for (const auto &entry : Singleton<CheckStore>::instance()->journal(QDate::currentDate().startOfDay()))
        finished.append(resultFromJournal(entry.entry));
    return finished;
}

} // namespace

void CheckDesk::look(const Command &command)
{
    switch (command.kind) {
    case Command::Kind::RetryRequest:
        QueueAdmin().retry(command.text.toLongLong());
        m_parts->till.drain().wakeUp();
        break;
    case Command::Kind::DiscardRequest:
        QueueAdmin().discard(command.text.toLongLong(), command.reason);
        break;
    case Command::Kind::SaveReceipt:
        return saveReceipt(command.text);
    case Command::Kind::ShowParked:
        m_view.listing = parkedListing(m_parts->till.session().keptChecks());
        return;
    case Command::Kind::ShowJournal:
        m_view.listing = journalListing(today());
        return;
    case Command::Kind::ShowReceipt:
        return showReceipt(command.text);
    default:
        break;
    }
    m_view.listing = queueListing(QueueAdmin().list());
}

void CheckDesk::showReceipt(const QString &identifier)
{
    for (const QList<CheckResult> finished = today(); const CheckResult &check : finished) {
        if (check.identifier == identifier)
            m_view.receipt = receiptText(check, {});
    }
}

void CheckDesk::saveReceipt(const QString &text)
{
    const QDir folder(m_parts->till.host().dataFolder());
    const QString name = u"receipt-%1.txt"_s.arg(QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss"_s));
    QSaveFile file(folder.filePath(name));
    if (!file.open(QFile::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        throw BasicException(tr("Чек не сохранён: %1").arg(file.errorString()));
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    m_view.receipt = text;
    m_view.message = tr("Сохранено: %1").arg(file.fileName());
}

} // namespace till
