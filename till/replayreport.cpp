// Formats the report of a replay.
#include "replayreport.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString kindText(LeftOut::Kind kind)
{
    switch (kind) {
    case LeftOut::Kind::Return:
        return u"returned, "_s;
    case LeftOut::Kind::Cancelled:
        return u"cancelled, "_s;
    case LeftOut::Kind::Bad:
        break;
    }
    return u"bad, left out: "_s;
}

QString seconds(std::chrono::milliseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1000, 'f', 1);
}

/// The percentile: the smallest value that so many percent do not exceed.
double percentile(const QList<double> &sorted, int percent)
{
    const qsizetype rank = (sorted.size() * percent + 99) / 100;
    return sorted.at(std::max<qsizetype>(rank, 1) - 1);
}

QString row(const QStringList &cells)
{
    constexpr int firstWidth = 10;
    constexpr int width = 10;
    QString text = cells.constFirst().leftJustified(firstWidth);
    for (const QString &cell : cells.sliced(1))
        text += cell.rightJustified(width);
    return text + u'\n';
}

} // namespace

QString leftOutText(const Day &day)
{
    QString text;
    QMap<LeftOut::Kind, std::pair<int, Money>> totals;
    for (const LeftOut &left : day.leftOut) {
        text += u"line %1: %2%3\n"_s.arg(QString::number(left.line), kindText(left.kind), left.text);
        auto &[count, sum] = totals[left.kind];
        ++count;
        sum += left.sum;
    }
    const auto counted = [&totals](LeftOut::Kind kind) { return QString::number(totals.value(kind).first); };
    const auto summed = [&totals](LeftOut::Kind kind) { return totals.value(kind).second.toText(); };
    return text +
           u"%1 receipts with %2 lines for %3; not sold: %4 bad lines, %5 returned (%6), %7 cancelled (%8)\n"_s.arg(
               QString::number(day.receipts.size()), QString::number(day.lines()), day.sum().toText(),
               counted(LeftOut::Kind::Bad), counted(LeftOut::Kind::Return), summed(LeftOut::Kind::Return),
               counted(LeftOut::Kind::Cancelled), summed(LeftOut::Kind::Cancelled));
}

QString soldText(const Day &day, const ReplayTills &tills)
{
    QString text;
    for (const qsizetype index : tills.inDoubt())
        text +=
            u"invoice %1: IN DOUBT, its till ended while selling it; see kvo-till status and journal on its till.ini\n"_s
                .arg(day.receipts.at(index).invoice);
    for (const qsizetype index : tills.left())
        text += u"invoice %1: NOT SOLD, no till could\n"_s.arg(day.receipts.at(index).invoice);
    Money sum;
    Money spent;
    Money earned;
    qsizetype closed = 0;
    for (const ReplayedReceipt &replayed : tills.replayed()) {
        const QString invoice = day.receipts.at(replayed.index).invoice;
        if (!replayed.isClosed)
            text += u"invoice %1: NOT SOLD\n"_s.arg(invoice);
        for (const QString &message : replayed.messages)
            text += u"%1: %2\n"_s.arg(invoice, message);
        closed += replayed.isClosed ? 1 : 0;
        sum += replayed.sum;
        spent += replayed.spent;
        earned += replayed.earned;
    }
    const double rate =
        static_cast<double>(closed) / std::max(1e-3, static_cast<double>(tills.sellingTime().count()) / 1000);
    return text +
           u"sold %1 of %2 receipts for %3 of %4, %5 of it in points, %6 points earned\n"_s.arg(
               QString::number(closed), QString::number(day.receipts.size()), sum.toText(), day.sum().toText(),
               spent.toText(), earned.toText()) +
           u"in %1 s (%2 receipts/s), and %3 s until %4\n"_s.arg(
               seconds(tills.sellingTime()), QString::number(rate, 'f', 1), seconds(tills.deliveryTime()),
               tills.exitStatus() == 0 ? u"the queue was delivered"_s : u"the last till ended"_s);
}

QString timesText(const QList<ReplayedReceipt> &replayed)
{
    QMap<QString, QList<double>> times;
    for (const ReplayedReceipt &receipt : replayed) {
        for (auto operation = receipt.milliseconds.cbegin(); operation != receipt.milliseconds.cend(); ++operation)
            times[operation.key()] += operation.value();
    }
    QString text = row({u"operation"_s, u"count"_s, u"p50 ms"_s, u"p90 ms"_s, u"p99 ms"_s, u"max ms"_s});
    for (const QString &name : {u"add line"_s, u"identify"_s, u"price"_s, u"spend"_s, u"close"_s}) {
        QList<double> sorted = times.value(name);
        if (sorted.isEmpty())
            continue;
        std::sort(sorted.begin(), sorted.end());
        QStringList cells{name, QString::number(sorted.size())};
        for (const int percent : {50, 90, 99, 100})
            cells.append(QString::number(percentile(sorted, percent), 'f', 2));
        text += row(cells);
    }
    return text;
}

bool isFlawless(const ReplayTills &tills)
{
    const QList<ReplayedReceipt> &replayed = tills.replayed();
    return tills.inDoubt().isEmpty() && tills.left().isEmpty() &&
           std::all_of(replayed.cbegin(), replayed.cend(),
                       [](const ReplayedReceipt &receipt) { return receipt.isClosed && receipt.messages.isEmpty(); });
}

} // namespace till
