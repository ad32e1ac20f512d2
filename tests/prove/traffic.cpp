// Counting.
#include "traffic.h"

#include <QtCore/QSet>

#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

/// Pricing books nothing, so that repeating it proves nothing.
bool isBooking(const QString &method)
{
    static const QSet<QString> methods{u"createOrder"_s, u"updateOrder"_s, u"postOrder"_s, u"bindOrderId"_s,
                                       u"cancelOrder"_s};
    return methods.contains(method);
}

} // namespace

int total(const Figures &figures)
{
    return std::accumulate(figures.cbegin(), figures.cend(), 0);
}

Traffic count(const QList<QJsonObject> &record)
{
    Traffic traffic;
    QSet<QString> delivered;
    for (const QJsonObject &entry : record) {
        if (const QString fault = entry.value(u"fault").toString(); !fault.isEmpty()) {
            ++traffic.faults[fault];
            continue;
        }
        ++traffic.served;
        const QString method = entry.value(u"method").toString();
        const QString basket = entry.value(u"basket").toString();
        const QString request = QStringList{method, basket, entry.value(u"body").toString()}.join(u' ');
        const bool accepted = entry.value(u"accepted").toBool();
        if (!accepted && !basket.isEmpty())
            ++traffic.refused[method];
        if (!accepted || !isBooking(method))
            continue;
        if (delivered.contains(request))
            ++traffic.repeats[method];
        delivered.insert(request);
    }
    return traffic;
}

} // namespace prove
