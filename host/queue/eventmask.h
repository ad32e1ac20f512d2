// What people may see of an event: no credentials, no whole phone or card numbers.
#pragma once

#include <poshost_export.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace eventmask {

/// A text for people, such as an error, with all but the last four digits of telephone and card numbers (12 to 19
/// digits) as "*", and passwords in URLs hidden.
QString maskText(const QString &text);

/// `event` with the values of the headers Authorization and Cookie hidden, members named like phones and cards masked
/// but for their last four digits, and phone numbers and passwords of URLs in all other texts.
POSHOST_EXPORT QJsonObject masked(const QJsonObject &event);

} // namespace eventmask
