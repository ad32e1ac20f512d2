// What went over the wire, counted from the fault proxy's record.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QMap>

namespace prove {

using Figures = QMap<QString, int>; ///< By name.

int total(const Figures &figures);

struct Traffic
{
    int served = 0;  ///< Exchanges that the service has answered.
    Figures faults;  ///< By kind.
    Figures refused; ///< By method: requests about an order that the service itself would not accept.
    Figures repeats; ///< By method: deliveries of the very same order request beyond the first accepted one.
};

Traffic count(const QList<QJsonObject> &record);

} // namespace prove
