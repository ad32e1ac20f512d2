// Prints the journal. checkresult.cpp defines its entries.
#include "journal.h"

#include "checkview.h"

#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString lineOf(const CheckStore::JournalEntry &entry)
{
    const CheckResult check = resultFromJournal(entry.entry);
    const QString card = check.card.isEmpty() ? u"без карты"_s : u"карта "_s + maskedCard(check.card);
    return u"%1  %2  сумма %3, списано %4, начислено %5  %6  чек %7\n"_s.arg(
        entry.entered.toString(u"dd.MM.yyyy HH:mm:ss"_s), check.outcome == "closed"_L1 ? u"закрыт"_s : u"аннулирован"_s,
        check.sum().toText(), check.spent().toText(), check.earned.toText(), card, check.identifier);
}

} // namespace

QString journalText(const QList<CheckStore::JournalEntry> &entries, bool json)
{
    QString text;
    for (const CheckStore::JournalEntry &entry : entries) {
        QJsonObject object = entry.entry;
        object.insert(u"entered"_s, entry.entered.toUTC().toString(Qt::ISODateWithMs));
        text += json ? QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n' : lineOf(entry);
    }
    return text;
}

} // namespace till
