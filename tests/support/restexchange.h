// The exchange with the service, replaced for all clients while the object lives.
#pragma once

#include <core/mockfactory.h>
#include <net/restclient.h>

#include <QtCore/QJsonObject>

/// Answers every request with `answer` and keeps what was sent last.
class RestExchange : public RestClient
{
public:
    RestExchange()
    {
        MockFactory<RestClient>::install(QSharedPointer<RestClient>(this, [](RestClient *) {}));
    }
    ~RestExchange() override { MockFactory<RestClient>::clear(); }

    void setTimeout(int milliseconds) override { timeout = milliseconds; }
    void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                 const QHash<QString, QString> &headers) override
    {
        calls.append(url.path().section(u'/', -1));
        sentOp = op;
        sentUrl = url;
        sentBody = payload.object();
        sentHeaders = headers;
    }
    http::Response response() const override { return answer; }

    http::Response answer;
    int timeout = 0;
    QStringList calls; ///< The methods of all requests.
    QNetworkAccessManager::Operation sentOp = QNetworkAccessManager::UnknownOperation;
    QUrl sentUrl;
    QJsonObject sentBody;
    QHash<QString, QString> sentHeaders;
};
