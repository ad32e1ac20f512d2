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
        const QString request =
            QStringList{method, entry.value(u"basket").toString(), entry.value(u"body").toString()}.join(u' ');
        if (!isBooking(method))
            continue;
        if (!entry.value(u"accepted").toBool()) {
            ++traffic.refused[method];
            continue;
        }
        if (delivered.contains(request))
            ++traffic.repeats[method];
        delivered.insert(request);
    }
    return traffic;
}

} // namespace prove
