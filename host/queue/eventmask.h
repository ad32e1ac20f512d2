// What people may see of an event: no credentials, no whole phone numbers.
#pragma once

#include <poshost_export.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace eventmask {

/// `text` with all but the last four digits of each Russian phone number as "*", however it is written.
QString maskPhones(const QString &text);

/// `event` with the values of the headers Authorization and Cookie hidden, all of a member whose name contains "phone"
/// masked but the last four characters, and maskPhones() applied to all other texts.
POSHOST_EXPORT QJsonObject masked(const QJsonObject &event);

} // namespace eventmask
