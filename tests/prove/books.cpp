// Counts by the tills' words alone.
#include "books.h"

#include <QtCore/QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

QString text(const QJsonValue &object, QStringView key)
{
    return object[key].toString();
}

/// The orders that are bound to a check, by check.
QMap<QString, int> boundOrders(const QJsonArray &orders)
{
    QMap<QString, int> bound;
    for (const QJsonValue order : orders)
        bound[text(order, u"orderId")] += text(order, u"state") == u"bound" ? 1 : 0;
    return bound;
}

void judgeChecks(const QList<QJsonObject> &journal, const QMap<QString, int> &bound, Books &books)
{
    for (const QJsonObject &check : journal) {
        const bool closed = text(check, u"outcome") == u"closed";
        ++(closed ? books.closed : books.voided);
        if (!closed || text(check, u"card").isEmpty())
            continue;
        ++books.closedWithCard;
        const QString name = text(check, u"check");
        const int orders = bound.value(name);
        books.lost += orders == 0 ? 1 : 0;
        books.doubled += std::max(orders - 1, 0);
        if (orders != 1)
            books.findings.append(u"check %1 has a card and %2 bound orders"_s.arg(name, QString::number(orders)));
    }
}

void judgeOrders(const QJsonArray &orders, Books &books)
{
    static const QSet<QString> good{u"calculated"_s, u"bound"_s, u"cancelled"_s};
    for (const QJsonValue order : orders)
        if (const QString state = text(order, u"state"); !good.contains(state))
            books.findings.append(u"order %1 is left %2"_s.arg(text(order, u"basket"), state));
}

} // namespace

Books judge(const QList<QJsonObject> &journal, const QJsonArray &orders)
{
    Books books;
    judgeChecks(journal, boundOrders(orders), books);
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
