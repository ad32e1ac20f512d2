// The exchange with the service, replaced for every client that the factory hands out while the object lives.
#pragma once

#include <core/mockfactory.h>
#include <net/restclient.h>

#include <gmock/gmock.h>

#include <QtCore/QJsonObject>

class MockRestClient : public RestClient
{
public:
    MOCK_METHOD(void, setTimeout, (int), (override));
    MOCK_METHOD(void, request,
                (QNetworkAccessManager::Operation, const QUrl &, const QJsonDocument &,
                 (const QHash<QString, QString> &)),
                (override));
    MOCK_METHOD(http::Response, response, (), (const, override));
};

/// Answers every request with `answer` and keeps what was sent last.
class RestExchange
{
public:
    RestExchange()
    {
        using testing::_;
        ON_CALL(*client, request)
            .WillByDefault([this](auto op, const auto &url, const auto &payload, const auto &headers) {
                ++requests;
                sentOp = op;
                sentUrl = url;
                sentBody = payload.object();
                sentHeaders = headers;
            });
        ON_CALL(*client, response).WillByDefault([this] { return answer; });
        MockFactory<RestClient>::install(client);
    }
    ~RestExchange() { MockFactory<RestClient>::clear(); }
    Q_DISABLE_COPY_MOVE(RestExchange)

    QSharedPointer<testing::NiceMock<MockRestClient>> client =
        QSharedPointer<testing::NiceMock<MockRestClient>>::create();
    http::Response answer;
    int requests = 0;
    QNetworkAccessManager::Operation sentOp = QNetworkAccessManager::UnknownOperation;
    QUrl sentUrl;
    QJsonObject sentBody;
    QHash<QString, QString> sentHeaders;
};
