// Exchanges by QNetworkAccessManager.
#include "networkaccess.h"

#include "pairs.h"

#include <QtCore/QEventLoop>
#include <QtCore/QJsonDocument>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>

#include <memory>

namespace bench {

NetworkAccess::NetworkAccess()
{
    m_manager.setProxy(QNetworkProxy::NoProxy);
}

QJsonObject NetworkAccess::send(const QNetworkRequest &request, const QByteArray &body)
{
    const std::unique_ptr<QNetworkReply> reply(body.isEmpty() ? m_manager.get(request) : m_manager.post(request, body));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    require(reply->error() == QNetworkReply::NoError, "QNetworkAccessManager got no answer");
    return QJsonDocument::fromJson(reply->readAll()).object();
}

QNetworkRequest NetworkAccess::requestOf(const Exchange &exchange)
{
    QNetworkRequest request(QUrl::fromEncoded(exchange.url));
    for (const QByteArray &line : exchange.headers)
        request.setRawHeader(line.left(line.indexOf(':')), line.mid(line.indexOf(':') + 2));
    return request;
}

} // namespace bench
