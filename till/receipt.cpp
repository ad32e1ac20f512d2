// Lays out the receipt: names to the left, sums to the right, nothing wider than the paper.
#include "receipt.h"

#include "checkview.h"

#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Characters that a name on the receipt may have, whatever the file or the service says: three lines.
constexpr qsizetype longestText = 3 * receiptWidth;

/// Characters, not bytes and not UTF-16 units.
qsizetype widthOf(const QString &text)
{
    return text.toUcs4().size();
}

/// Breaks a text into lines of the paper's width, between words where there is a blank.
QStringList wrap(const QString &text)
{
    const QList<uint> characters = plainText(text, longestText).toUcs4();
    QStringList lines;
    for (qsizetype start = 0; start < characters.size() || lines.isEmpty();) {
        qsizetype length = characters.size() - start;
        if (length > receiptWidth) {
            const qsizetype blank = characters.lastIndexOf(u' ', start + receiptWidth);
            length = blank > start ? blank - start : receiptWidth;
        }
        const QList<uint> line = characters.mid(start, length);
        lines.append(QString::fromUcs4(reinterpret_cast<const char32_t *>(line.constData()), line.size()));
        start += length;
        if (start < characters.size() && characters[start] == u' ')
            ++start;
    }
    return lines;
}

/// `left` at the left edge and `right` at the right one; on lines of their own where both do not fit into one.
QString row(const QString &left, const QString &text)
{
    const QString right = plainText(text, longestText);
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

/// What the points were and what they become; `expected` while the service has not accepted everything.
QString pointsRows(const CheckResult &result, bool expected)
{
    QString rows;
    if (result.balance)
        rows += row(u"Баланс баллов до чека"_s, result.balance->toText());
    if (result.outcome == "voided"_L1)
        return rows;
    rows += row(u"Списано баллов"_s, result.spent().toText()) + row(u"Начислено баллов"_s, result.earned.toText());
    if (const auto after = result.balanceAfter())
        rows += row(expected ? u"Баланс после чека (ожидается)"_s : u"Баланс баллов после чека"_s, after->toText());
    return rows;
}

QString cardRows(const CheckResult &result, bool expected)
{
    if (result.card.isEmpty())
        return {};
    QString rows = rule(u'-') + row(u"Карта"_s, result.card);
    if (!result.customer.isEmpty())
        rows += row(u"Покупатель"_s, result.customer);
    if (!result.tier.isEmpty())
        rows += row(u"Уровень"_s, result.tier);
    return rows + pointsRows(result, expected);
}

/// The customer need not know why; the cashier is told at the start and in the status.
QString loyaltyRows(const CheckResult &result)
{
    return result.loyaltyOff.isEmpty() ? QString() : rule(u'-') + centred(u"Бонусы не работают"_s);
}

QString queueRows(const QueueStatus &queue)
{
    QString rows;
    if (queue.waiting > 0)
        rows += row(u"Ожидает отправки"_s, QString::number(queue.waiting));
    if (queue.blocked > 0)
        rows += row(u"Остановлено"_s, QString::number(queue.blocked));
    if (!rows.isEmpty() && queue.oldest.isValid())
        rows += row(u"В очереди с"_s, queue.oldest.toString(u"dd.MM.yyyy HH:mm:ss"_s));
    return rows.isEmpty() ? rows : rule(u'-') + rows;
}

} // namespace

QString receiptText(const CheckResult &result, const QueueStatus &queue)
{
    QString text = rule(u'=') + centred(heading(result.outcome));
    text += row(u"Открыт"_s, result.dateTime.toString(u"dd.MM.yyyy HH:mm:ss"_s)) + row(u"N"_s, result.identifier);
    if (!result.cashier.isEmpty())
        text += row(u"Кассир"_s, result.cashier);
    text += rule(u'-');
    for (const ResultLine &line : result.lines)
        text += lineRows(line);
    const bool expected = queue.waiting + queue.blocked > 0 || !result.loyaltyOff.isEmpty();
    return text + totalRows(result) + cardRows(result, expected) + loyaltyRows(result) + queueRows(queue) + rule(u'=');
}

} // namespace till
