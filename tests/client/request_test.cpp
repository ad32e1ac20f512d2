// The queue form of a request: what one run of the till writes, a later run must read.
#include "client/request.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

TEST(Request, ComesBackFromItsQueueEvent)
{
    const Request request{QNetworkAccessManager::PostOperation,
                          QUrl(u"http://localhost:8080/api/ax/xpp/v1/createOrder?q=%2B7%20a&name=Ёж"_s),
                          {{u"Authorization"_s, u"Basic Og=="_s}, {u"Content-Type"_s, u"application/json"_s}},
                          QJsonDocument(json(R"({"basket": "b-1", "orderLines": [{"isSale": true, "qty": "1"}]})"))};

    const QByteArray stored = QJsonDocument(request.toQueueEvent()).toJson();
    const Request restored = Request::fromQueueEvent(QJsonDocument::fromJson(stored).object());

    EXPECT_EQ(restored.op, request.op);
    EXPECT_EQ(restored.url, request.url);
    EXPECT_EQ(restored.headers, request.headers);
    EXPECT_EQ(restored.payload, request.payload);
    EXPECT_EQ(request.toQueueEvent().keys(), (QStringList{u"headers"_s, u"op"_s, u"payload"_s, u"url"_s}));
    EXPECT_EQ(request.toQueueEvent().value("url"_L1).toString(), request.url.toString(QUrl::FullyEncoded));
}

TEST(Request, ReadsEachEntryOfADamagedEventOnItsOwn)
{
    const Request onlyUrl = Request::fromQueueEvent(json(R"({"url": "http://h/a"})"));
    EXPECT_EQ(onlyUrl.op, QNetworkAccessManager::UnknownOperation);
    EXPECT_EQ(onlyUrl.url, QUrl(u"http://h/a"_s));
    EXPECT_TRUE(onlyUrl.headers.isEmpty());
    EXPECT_EQ(onlyUrl.payload, QJsonDocument(QJsonObject()));

    const Request odd = Request::fromQueueEvent(
        json(R"({"op": 4.0, "url": 7, "headers": {"X-Number": 5, "X-List": [1]}, "payload": "text"})"));
    EXPECT_EQ(odd.op, QNetworkAccessManager::PostOperation);
    EXPECT_EQ(odd.url, QUrl());
    EXPECT_EQ(odd.headers, (QHash<QString, QString>{{u"X-Number"_s, u"5"_s}, {u"X-List"_s, QString()}}));
    EXPECT_EQ(odd.payload, QJsonDocument(QJsonObject()));

    EXPECT_EQ(Request::fromQueueEvent(json(R"({"op": "post"})")).op, QNetworkAccessManager::UnknownOperation);
}

} // namespace kvo
