// The exchange with the service, replaced for all clients while the object lives.
#pragma once

#include <core/mockfactory.h>
#include <net/restclient.h>

#include <QtCore/QJsonObject>

/// Answers every request and keeps what was sent.
struct RestExchange : RestClient
{
    RestExchange()
    {
        MockFactory<RestClient>::install(QSharedPointer<RestClient>(this, [](RestClient *) {}));
    }
    ~RestExchange() override { MockFactory<RestClient>::clear(); }

    static http::Response response(int status, const QByteArray &json)
    {
        return {status, QNetworkReply::NoError, tr::Tr(QStringLiteral("?")), QJsonDocument::fromJson(json)};
    }

    static http::Response ok(const QByteArray &json) { return response(200, json); }

    void setTimeout(int milliseconds) override { timeout = milliseconds; }
    void request(QNetworkAccessManager::Operation op, const QUrl &url, const QJsonDocument &payload,
                 const QHash<QString, QString> &headers) override
    {
        calls.append(url.toString(QUrl::FullyEncoded).section(u'/', -1));
        bodies.append(payload.object());
        sentOp = op;
        sentUrl = url;
        sentHeaders = headers;
    }
    http::Response response() const override
    {
        const QString method = calls.last().section(u'?', 0, 0);
        return failures.removeOne(method) ? response(500, R"({"success": false, "message": "отказ"})")
                                          : answers.value(method, answer);
    }

    http::Response answer = ok(R"({"success": true})");
    QHash<QString, http::Response> answers; ///< To methods with an answer of their own.
    mutable QStringList failures;           ///< Methods that are refused, once for each entry.
    QStringList calls;                      ///< What was asked: "cardInfo?Brand=B&..." or "createOrder".
    QList<QJsonObject> bodies;
    int timeout = 0;
    QNetworkAccessManager::Operation sentOp = QNetworkAccessManager::UnknownOperation; ///< Of the last request.
    QUrl sentUrl;
    QHash<QString, QString> sentHeaders;
};
