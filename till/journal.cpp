// Prints the journal. checkresult.cpp defines its entries.
#include "journal.h"

#include <core/money.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString masked(const QString &card)
{
    constexpr qsizetype shown = 4;
    return card.isEmpty() ? u"без карты"_s : u"карта …"_s + card.right(shown);
}

QString sumOf(const QJsonArray &lines)
{
    Money sum;
    for (const auto &line : lines)
        sum += Money::fromRubles(line.toObject().value(u"amount"_s).toString().toDouble());
    return sum.toText();
}

QString lineOf(const CheckStore::JournalEntry &entry)
{
    const auto text = [&entry](QLatin1StringView key) { return entry.entry.value(key).toString(); };
    return u"%1  %2  сумма %3, списано %4, начислено %5  %6  чек %7\n"_s.arg(
        entry.entered.toString(u"dd.MM.yyyy HH:mm:ss"_s),
        text("outcome"_L1) == u"closed" ? u"закрыт"_s : u"аннулирован"_s,
        sumOf(entry.entry.value("lines"_L1).toArray()), text("spent"_L1), text("earned"_L1), masked(text("card"_L1)),
        text("check"_L1));
}

} // namespace

QString journalText(const QList<CheckStore::JournalEntry> &entries, bool json)
{
    QString text;
    for (const CheckStore::JournalEntry &entry : entries) {
        if (json)
            text += QString::fromUtf8(QJsonDocument(entry.entry).toJson(QJsonDocument::Compact)) + u'\n';
        else
            text += lineOf(entry);
    }
    return text;
}

} // namespace till
