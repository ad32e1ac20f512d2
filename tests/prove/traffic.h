// What went over the wire, counted from the fault proxy's record.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QMap>

namespace prove {

struct Traffic
{
    int served = 0;             ///< Exchanges that the service has answered.
    QMap<QString, int> faults;  ///< By kind.
    QMap<QString, int> refused; ///< By method: order requests that the service itself would not accept.
    QMap<QString, int> repeats; ///< By method: deliveries of the very same order request beyond the first accepted one.

    int totalFaults() const;
    int totalRefused() const;
    int totalRepeats() const;
};

Traffic count(const QList<QJsonObject> &record);

} // namespace prove
