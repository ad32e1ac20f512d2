// The books of both sides, compared check by check, booking by booking and customer by customer.
#include "books.h"

#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QMap>
#include <QtCore/QSet>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

using Hundredths = qint64;

QString text(const QJsonObject &object, const char16_t *key)
{
    return object.value(QStringView(key)).toString();
}

/// A number with two decimals, as both sides write them.
Hundredths number(const QJsonObject &object, const char16_t *key)
{
    QString digits = text(object, key);
    const bool twoDecimals = digits.size() > 3 && digits.at(digits.size() - 3) == u'.';
    bool good = false;
    const Hundredths value = digits.remove(u'.').toLongLong(&good);
    if (!good || !twoDecimals)
        throw std::runtime_error(qPrintable(QString::fromUtf16(key) + u" is no number: "_s + text(object, key)));
    return value;
}

/// A check's or an order's lines: number, amount, points; by number.
QString linesOf(const QJsonObject &owner, const char16_t *points)
{
    QMap<int, QString> lines;
    for (const QJsonValue entry : owner.value(u"lines").toArray()) {
        const QJsonObject line = entry.toObject();
        const int id = line.value(u"lineId").toInt();
        lines[id] += u"%1:%2-%3 "_s.arg(QString::number(id), QString::number(number(line, u"amount")),
                                        QString::number(number(line, points)));
    }
    return QStringList(lines.values()).join(QString());
}

class Judge
{
public:
    Judge(const QList<QJsonObject> &journal, const QJsonObject &ledger);

    Books judge();

private:
    void find(int Books::*figure, const QString &sentence);
    void judgeCheck(const QJsonObject &check);
    void judgeSale(const QJsonObject &check, const QString &name);
    void judgeOrder(const QJsonObject &order);
    void judgeMovements(const QJsonArray &movements);
    void judgeBalances(const QJsonArray &customers);

    const QList<QJsonObject> &m_journal;
    const QJsonObject &m_ledger;
    QHash<QString, QJsonObject> m_orders;  ///< By basket.
    QHash<QString, QString> m_accounts;    ///< By card.
    QHash<QString, Hundredths> m_balances; ///< By account: what the sales must have made of it.
    QSet<QString> m_checks;
    QSet<QString> m_sold; ///< Baskets of closed checks.
    Books m_books;
};

Judge::Judge(const QList<QJsonObject> &journal, const QJsonObject &ledger) : m_journal(journal), m_ledger(ledger)
{
    for (const QJsonValue entry : ledger.value(u"orders").toArray())
        m_orders.insert(text(entry.toObject(), u"basket"), entry.toObject());
    for (const QJsonValue entry : ledger.value(u"customers").toArray())
        for (const QJsonValue card : entry.toObject().value(u"Cards").toArray())
            m_accounts.insert(card.toString(), text(entry.toObject(), u"CustAccount"));
}

void Judge::find(int Books::*figure, const QString &sentence)
{
    ++(m_books.*figure);
    m_books.findings.append(sentence);
}

Books Judge::judge()
{
    for (const QJsonObject &check : m_journal)
        judgeCheck(check);
    for (const QJsonObject &order : std::as_const(m_orders))
        judgeOrder(order);
    judgeMovements(m_ledger.value(u"movements").toArray());
    judgeBalances(m_ledger.value(u"customers").toArray());
    return m_books;
}

void Judge::judgeCheck(const QJsonObject &check)
{
    const QString name = u"check "_s + text(check, u"check");
    if (m_checks.contains(name))
        find(&Books::doubled, name + u" is in the journal twice"_s);
    m_checks.insert(name);
    const bool closed = text(check, u"outcome") == u"closed";
    ++(closed ? m_books.closed : m_books.voided);
    if (!closed || text(check, u"card").isEmpty())
        return;
    ++m_books.closedWithCard;
    judgeSale(check, name);
}

/// A closed check with a card.
void Judge::judgeSale(const QJsonObject &check, const QString &name)
{
    m_balances[m_accounts.value(text(check, u"card"))] += number(check, u"earned") - number(check, u"spent");
    const QString basket = text(check, u"basket");
    const QJsonObject order = m_orders.value(basket);
    const QString state = text(order, u"state");
    if (state != u"bound" || text(order, u"orderId") != text(check, u"check")) {
        find(&Books::lost, u"%1: its order %2 is %3, bound to \"%4\""_s.arg(
                               name, basket, state.isEmpty() ? u"missing"_s : state, text(order, u"orderId")));
    } else if (text(order, u"card") != text(check, u"card") || linesOf(order, u"points") != linesOf(check, u"spent") ||
               number(order, u"points") != number(check, u"spent") ||
               number(order, u"earned") != number(check, u"earned")) {
        find(&Books::different, u"%1: %2 for %3, but %4 for %5 at the service"_s.arg(
                                    name, linesOf(check, u"spent"), text(check, u"earned"), linesOf(order, u"points"),
                                    text(order, u"earned")));
    }
    if (m_sold.contains(basket))
        find(&Books::doubled, name + u" shares order "_s + basket);
    m_sold.insert(basket);
}

void Judge::judgeOrder(const QJsonObject &order)
{
    const QString state = text(order, u"state");
    const QString name = u"order %1 (%2, check \"%3\")"_s.arg(text(order, u"basket"), state, text(order, u"orderId"));
    if (state == u"created" || state == u"updated")
        find(&Books::leftOpen, name + u" is left open"_s);
    else if ((state == u"posted" || state == u"bound") && !m_sold.contains(text(order, u"basket")))
        find(&Books::doubled, name + u" is booked, but was not sold"_s);
}

/// Points are spent once and earned once for an order.
void Judge::judgeMovements(const QJsonArray &movements)
{
    QSet<QString> seen;
    for (const QJsonValue entry : movements) {
        const QJsonObject movement = entry.toObject();
        const QString kind = text(movement, u"kind");
        if (kind == u"opening")
            m_balances[text(movement, u"account")] += number(movement, u"points");
        if (kind != u"spend" && kind != u"earn")
            continue;
        const QString booking = kind + u" of order "_s + text(movement, u"basket");
        if (seen.contains(booking))
            find(&Books::doubled, booking + u" is booked again"_s);
        seen.insert(booking);
    }
}

/// From the opening balances and the till's journal alone.
void Judge::judgeBalances(const QJsonArray &customers)
{
    for (const QJsonValue entry : customers) {
        const QString account = text(entry.toObject(), u"CustAccount");
        const Hundredths expected = m_balances.value(account);
        const Hundredths actual = number(entry.toObject(), u"Balance");
        if (actual != expected)
            find(&Books::unbalanced, u"customer %1 has %2 hundredths of a point, by the sales it must be %3"_s.arg(
                                         account, QString::number(actual), QString::number(expected)));
    }
}

} // namespace

Books judge(const QList<QJsonObject> &journal, const QJsonObject &ledger)
{
    return Judge(journal, ledger).judge();
}

} // namespace prove
