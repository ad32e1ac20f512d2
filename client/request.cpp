// The queue form of a request. Also reads events that an earlier run of the till stored.
#include "client/request.h"

#include <QtCore/QVariant>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

// Never load a number outside the range of the enumeration.
QNetworkAccessManager::Operation operationFrom(int number)
{
    const bool known =
        number >= QNetworkAccessManager::HeadOperation && number <= QNetworkAccessManager::CustomOperation;
    return known ? static_cast<QNetworkAccessManager::Operation>(number) : QNetworkAccessManager::UnknownOperation;
}

} // namespace

QJsonObject Request::toQueueEvent() const
{
    QJsonObject headerObject;
    for (auto header = headers.cbegin(); header != headers.cend(); ++header)
        headerObject.insert(header.key(), header.value());
    return {{u"op"_s, static_cast<int>(op)},
            {u"url"_s, url.toString(QUrl::FullyEncoded)},
            {u"headers"_s, headerObject},
            {u"payload"_s, payload.object()}};
}

Request Request::fromQueueEvent(const QJsonObject &event)
{
    Request request;
    request.op = operationFrom(event.value("op"_L1).toInt());
    request.url = QUrl(event.value("url"_L1).toString(), QUrl::TolerantMode);
    const QJsonObject headerObject = event.value("headers"_L1).toObject();
    for (auto header = headerObject.constBegin(); header != headerObject.constEnd(); ++header)
        request.headers.insert(header.key(), header.value().toVariant().toString());
    request.payload = QJsonDocument(event.value("payload"_L1).toObject());
    return request;
}

} // namespace kvo
