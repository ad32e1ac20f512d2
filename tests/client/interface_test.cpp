// Settings, queries, messages and orders: what goes over the wire and what is read from the answer.
#include "client/interface.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/fakedocument.h"
#include "tests/support/json.h"
#include "tests/support/mockrestclient.h"
#include "tests/support/printqt.h"

#include <core/basicexception.h>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

struct OpenInterface : Interface
{
    using Interface::brand;
    using Interface::headers;
    using Interface::host;
    using Interface::Interface;
    using Interface::path;
    using Interface::timeout;
    using Interface::verificationBrand;
    using Interface::verificationPath;
};

class ServiceCalls : public testing::Test
{
protected:
    void answerWith(const char *body)
    {
        exchange.answer = {200, QNetworkReply::NoError, tr::Tr(u"?"_s), QJsonDocument::fromJson(body)};
    }

    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s},
                       {u"Kvo:verificationBrand"_s, u"V"_s},
                       {u"Kvo:onlineStore"_s, u"S"_s},
                       {u"Kvo:terminal"_s, u"T"_s},
                       {u"Kvo:path"_s, u"/api"_s}}};
    RestExchange exchange;
    OpenInterface client;
    QSharedPointer<FakeDocument> document = QSharedPointer<FakeDocument>::create();
    QSharedPointer<DocumentCardRecord> card = QSharedPointer<DocumentCardRecord>::create();
};

} // namespace

TEST(Settings, HaveDefaults)
{
    const FakeConfig config({});
    const OpenInterface client;
    EXPECT_EQ(client.host, u"http://localhost");
    EXPECT_EQ(client.path, "/api/ax/xpp/v1");
    EXPECT_EQ(client.verificationPath, "/api/twofa/msg/v1");
    EXPECT_EQ(client.timeout, 10000);
    EXPECT_EQ(client.headers, (QHash<QString, QString>{{u"Authorization"_s, u"Basic Og=="_s},
                                                       {u"Content-Type"_s, u"application/json"_s}}));
}

TEST(Settings, CredentialsAndBrands)
{
    const FakeConfig config({{u"Kvo:user"_s, u"u"_s}, {u"Kvo:password"_s, u"p:%1"_s}, {u"Kvo:brand"_s, u"A"_s}});
    const OpenInterface client;
    EXPECT_EQ(client.headers.value(u"Authorization"_s), u"Basic dTpwOiUx");
    EXPECT_EQ(client.verificationBrand, u"A");

    const FakeConfig withEmptyBrand({{u"Kvo:brand"_s, u"A"_s}, {u"Kvo:verificationBrand"_s, u""_s}});
    EXPECT_EQ(OpenInterface().verificationBrand, QString());
}

TEST(Settings, TestDoublesReadNone)
{
    const FakeConfig config({{u"Kvo:brand"_s, u"A"_s}});
    const OpenInterface client(utils::ForMock{});
    EXPECT_TRUE(client.path.empty() && client.verificationPath.empty() && client.headers.isEmpty());
    EXPECT_EQ(client.brand, QString());
}

TEST_F(ServiceCalls, QueriesEncodeTheirValues)
{
    answerWith(R"({"success": true, "data": {"CustAccount": "7"}})");

    EXPECT_EQ(client.searchCustomer(u"+79001234567"_s, ECardNumberType::Phone), json(R"({"CustAccount": "7"})"));
    EXPECT_EQ(exchange.sentOp, QNetworkAccessManager::GetOperation);
    EXPECT_EQ(exchange.sentUrl.toString(QUrl::FullyEncoded),
              u"http://localhost/api/searchCustomer?Brand=B&Phone=%2B79001234567");
    EXPECT_EQ(exchange.sentHeaders, client.headers);

    client.searchCustomer(u"50% a&b"_s, ECardNumberType::Scanned);
    EXPECT_EQ(exchange.sentUrl.query(QUrl::FullyEncoded), u"Brand=B&CardNumber=50%25%20a%26b");

    client.cardInfo(u"1"_s, u"7"_s);
    EXPECT_EQ(exchange.sentUrl.toString(), u"http://localhost/api/cardInfo?Brand=B&CardNumber=1&CustAccountNum=7");

    client.loyaltyBonusInfo(QString(), u"7"_s);
    EXPECT_EQ(exchange.sentUrl.toString(),
              u"http://localhost/api/loyaltyBalanceInfo?Brand=B&CardNumber=&CustAccountNum=7");
}

TEST_F(ServiceCalls, QueriesReadData)
{
    const struct
    {
        const char *body;
        double balance;
    } cases[] = {
        {R"({"success": true, "data": {"AmountQty": 12.5}})", 12.5},
        {R"({"success": true, "data": {"AmountQty": "12.5"}})", 0},
        {R"({"success": true, "data": [1]})", 0},
        {R"({"success": true})", 0},
    };
    for (const auto &c : cases) {
        answerWith(c.body);
        EXPECT_EQ(client.loyaltyBonusInfo(u"1"_s, u"7"_s), c.balance) << c.body;
    }
    EXPECT_TRUE(client.cardInfo(u"1"_s, u"7"_s).isEmpty());
}

TEST_F(ServiceCalls, MessagesGoOutUnderTheLoyaltyBrand)
{
    answerWith(R"({"success": true})");
    client.verification(u"код 1234"_s, u"+7900"_s);
    EXPECT_EQ(exchange.sentUrl.path(), u"/api/twofa/msg/v1/send");
    EXPECT_EQ(exchange.sentBody, json(R"({"brand": "B", "phone": "+7900", "text": "код 1234", "channel": "sms"})"));
}

TEST_F(ServiceCalls, OrdersAreKeptOnTheCardOnceAccepted)
{
    card->setNumber(u"2000"_s);
    answerWith(R"({"success": true, "result": {"redeemPoints": [{"points": 10}, {"points": 2.5}, {}, 7]}})");

    const Response response = client.createOrder(document, card, true);

    EXPECT_EQ(exchange.sentUrl.path(), u"/api/createOrder");
    EXPECT_EQ(response.basket, exchange.sentBody.value("basket"_L1).toString());
    EXPECT_EQ(response.basket.size(), 36);
    EXPECT_EQ(response.redeemPointsAmount(), 12.5);
    EXPECT_EQ(response.earnPoints(), 0.0);
    EXPECT_TRUE(card->getOperationId().isEmpty());
    const Request post = client.postOrderRequest(card);
    EXPECT_EQ(post.url.path(), u"/api/postOrder");
    EXPECT_EQ(post.payload.object(), exchange.sentBody);

    answerWith(R"({"success": false})");
    EXPECT_THROW(client.calculateOrder(document, card), BasicException);
    EXPECT_EQ(client.postOrderRequest(card).payload, post.payload);
}

TEST_F(ServiceCalls, BindingAndCancellationNameTheOrder)
{
    card->setNumber(u"2000"_s);
    card->setOperationId(u"basket-1"_s);
    const Request bind = client.bindOrderIdRequest(document, card);
    const Request cancel = client.cancelOrderRequest(document, card);
    EXPECT_EQ(bind.url.path(), u"/api/bindOrderId");
    EXPECT_EQ(bind.payload.object(), json(R"({"brand": "B", "cardNumber": "2000", "onlineStore": "S",
                                              "basket": "basket-1", "orderID": "check-1", "terminal": "T"})"));
    EXPECT_EQ(cancel.url.path(), u"/api/cancelOrder");
    EXPECT_EQ(cancel.payload.object(), json(R"({"brand": "B", "cardNumber": "2000", "onlineStore": "S",
                                                "basket": "basket-1", "terminal": "T"})"));
    EXPECT_EQ(exchange.requests, 0);
}

} // namespace kvo
