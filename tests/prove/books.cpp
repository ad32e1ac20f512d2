// Sums from the till's words and the opening balances alone.
#include "books.h"

#include <QtCore/QJsonArray>
#include <QtCore/QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

QString text(const QJsonValue &object, QStringView key)
{
    return object[key].toString();
}

/// A number with two decimals, as both sides write them.
qint64 hundredths(const QJsonValue &object, QStringView key)
{
    return text(object, key).remove(u'.').toLongLong();
}

/// The orders that are bound to a check, by check.
QMap<QString, int> boundOrders(const QJsonArray &orders)
{
    QMap<QString, int> bound;
    for (const QJsonValue order : orders)
        bound[text(order, u"orderId")] += text(order, u"state") == u"bound" ? 1 : 0;
    return bound;
}

/// Earned less spent, by card. `bound`: orders by check.
QMap<QString, qint64> judgeChecks(const QList<QJsonObject> &journal, const QMap<QString, int> &bound, Books &books)
{
    QMap<QString, qint64> points;
    QSet<QString> names;
    for (const QJsonObject &check : journal) {
        const QString name = text(check, u"check");
        const QString card = text(check, u"card");
        const bool closed = text(check, u"outcome") == u"closed";
        ++(closed ? books.closed : books.voided);
        if (names.contains(name))
            books.findings.append(u"check %1 is in the journal twice"_s.arg(name));
        names.insert(name);
        if (!closed || card.isEmpty())
            continue;
        ++books.closedWithCard;
        points[card] += hundredths(check, u"earned") - hundredths(check, u"spent");
        const int orders = bound.value(name);
        books.lost += orders == 0 ? 1 : 0;
        books.doubled += std::max(orders - 1, 0);
        if (orders != 1)
            books.findings.append(u"check %1 has a card and %2 bound orders"_s.arg(name, QString::number(orders)));
    }
    return points;
}

void judgeOrders(const QJsonArray &orders, Books &books)
{
    static const QSet<QString> good{u"calculated"_s, u"bound"_s, u"cancelled"_s};
    for (const QJsonValue order : orders)
        if (const QString state = text(order, u"state"); !good.contains(state))
            books.findings.append(u"order %1 is left %2"_s.arg(text(order, u"basket"), state));
}

void judgeBalances(const QJsonObject &ledger, const QMap<QString, qint64> &points, Books &books)
{
    QMap<QString, qint64> expected;
    for (const QJsonValue movement : ledger.value(u"movements").toArray())
        if (text(movement, u"kind") == u"opening")
            expected[text(movement, u"account")] += hundredths(movement, u"points");
    for (const QJsonValue customer : ledger.value(u"customers").toArray()) {
        qint64 balance = expected.value(text(customer, u"CustAccount"));
        for (const QJsonValue card : customer[u"Cards"].toArray())
            balance += points.value(card.toString());
        const qint64 actual = hundredths(customer, u"Balance");
        if (actual != balance)
            books.findings.append(u"customer %1 has %2 hundredths of a point, by the sales it must be %3"_s.arg(
                text(customer, u"CustAccount"), QString::number(actual), QString::number(balance)));
    }
}

} // namespace

Books judge(const QList<QJsonObject> &journal, const QJsonObject &ledger)
{
    Books books;
    const QJsonArray orders = ledger.value(u"orders").toArray();
    judgeBalances(ledger, judgeChecks(journal, boundOrders(orders), books), books);
    judgeOrders(orders, books);
    return books;
}

Traffic count(const QList<QJsonObject> &record)
{
    Traffic traffic;
    QSet<QString> delivered;
    for (const QJsonObject &entry : record) {
        const QString method = text(entry, u"method");
        const QString basket = text(entry, u"basket");
        if (const QString fault = text(entry, u"fault"); !fault.isEmpty())
            ++traffic.faults[fault];
        if (basket.isEmpty())
            continue;
        if (!entry.value(u"accepted").toBool()) {
            ++traffic.refused;
        } else if (method != u"calculateOrder") { // pricing books nothing
            const QString request = method + basket + text(entry, u"body");
            traffic.repeats += delivered.contains(request) ? 1 : 0;
            delivered.insert(request);
        }
    }
    return traffic;
}

} // namespace prove
