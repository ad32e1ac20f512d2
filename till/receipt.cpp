// Lays out the receipt: names to the left, sums to the right, nothing wider than the paper.
#include "receipt.h"

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Characters, not bytes and not UTF-16 units.
qsizetype widthOf(const QString &text)
{
    return text.toUcs4().size();
}

/// Breaks a text into lines of the paper's width, between words where there is a blank.
QStringList wrap(const QString &text)
{
    QStringList lines;
    QString rest = text.simplified();
    while (widthOf(rest) > receiptWidth) {
        const qsizetype blank = rest.lastIndexOf(u' ', receiptWidth);
        const qsizetype end = blank > 0 ? blank : receiptWidth;
        lines.append(rest.left(end));
        rest = rest.mid(end).trimmed();
    }
    return lines << rest;
}

/// `left` at the left edge and `right` at the right one; on lines of their own where both do not fit into one.
QString row(const QString &left, const QString &right)
{
    const qsizetype gap = receiptWidth - widthOf(left) - widthOf(right);
    if (gap >= 1)
        return left + QString(gap, u' ') + right + u'\n';
    QString rows = wrap(left).join(u'\n') + u'\n';
    for (const QString &line : wrap(right))
        rows += QString(receiptWidth - widthOf(line), u' ') + line + u'\n';
    return rows;
}

QString rule(QChar character)
{
    return QString(receiptWidth, character) + u'\n';
}

QString centred(const QString &text)
{
    return QString(qMax<qsizetype>(0, (receiptWidth - widthOf(text)) / 2), u' ') + text + u'\n';
}

/// "3" or "0.345": no more decimals than there are.
QString quantityText(double quantity)
{
    QString text = QString::number(quantity, 'f', 3);
    while (text.endsWith(u'0'))
        text.chop(1);
    return text.endsWith(u'.') ? text.chopped(1) : text;
}

QString heading(const QString &outcome)
{
    if (outcome == "closed"_L1)
        return u"КАССОВЫЙ ЧЕК"_s;
    return outcome == "voided"_L1 ? u"ЧЕК АННУЛИРОВАН"_s : u"ЧЕК НЕ ЗАКРЫТ"_s;
}

QString lineRows(const ResultLine &line)
{
    QString rows = wrap(line.name).join(u'\n') + u'\n';
    rows += row(u"  "_s + quantityText(line.quantity) + u" x "_s + line.price.toText(), line.amount.toText());
    if (!line.spent.isZero())
        rows += row(u"  Скидка баллами"_s, (-line.spent).toText());
    return rows;
}

QString totalRows(const CheckResult &result)
{
    QString rows = rule(u'-');
    if (!result.spent().isZero()) {
        rows += row(u"Сумма"_s, result.sum().toText());
        rows += row(u"Скидка баллами"_s, (-result.spent()).toText());
    }
    return rows + row(u"ИТОГО"_s, result.total().toText());
}

QString cardRows(const CheckResult &result)
{
    if (result.card.isEmpty())
        return {};
    QString rows = rule(u'-') + row(u"Карта"_s, result.card);
    if (!result.customer.isEmpty())
        rows += row(u"Покупатель"_s, result.customer);
    if (!result.tier.isEmpty())
        rows += row(u"Уровень"_s, result.tier);
    if (result.balance)
        rows += row(u"Баланс баллов до чека"_s, result.balance->toText());
    if (result.outcome == "voided"_L1)
        return rows;
    return rows + row(u"Списано баллов"_s, result.spent().toText()) +
           row(u"Начислено баллов"_s, result.earned.toText());
}

QString queueRows(const DBQueueBroker::Status &queue)
{
    QString rows;
    if (queue.waiting > 0)
        rows += row(u"Ожидает отправки"_s, QString::number(queue.waiting));
    if (queue.deadLetters > 0)
        rows += row(u"Отклонено"_s, QString::number(queue.deadLetters));
    if (!rows.isEmpty() && queue.oldest.isValid())
        rows += row(u"В очереди с"_s, queue.oldest.toString(u"dd.MM.yyyy HH:mm:ss"_s));
    return rows.isEmpty() ? rows : rule(u'-') + rows;
}

} // namespace

QString receiptText(const CheckResult &result, const DBQueueBroker::Status &queue)
{
    QString text = rule(u'=') + centred(heading(result.outcome));
    text += row(u"Открыт"_s, result.dateTime.toString(u"dd.MM.yyyy HH:mm:ss"_s)) + row(u"N"_s, result.identifier);
    text += rule(u'-');
    for (const ResultLine &line : result.lines)
        text += lineRows(line);
    return text + totalRows(result) + cardRows(result) + queueRows(queue) + rule(u'=');
}

} // namespace till
