// Qt's own HTTP client, used as its documentation shows.
#pragma once

#include "barecurl.h"

#include <QtCore/QJsonObject>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkRequest>

namespace bench {

/// Waits for each answer in an event loop.
class NetworkAccess
{
public:
    NetworkAccess();

    /// Returns the answer, parsed. Throws std::runtime_error when there is none.
    QJsonObject send(const QNetworkRequest &request, const QByteArray &body);

    static QNetworkRequest requestOf(const Exchange &exchange);

private:
    QNetworkAccessManager m_manager;
};

} // namespace bench
