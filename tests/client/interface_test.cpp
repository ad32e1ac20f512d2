// Settings, queries, messages and orders: what goes over the wire and what is read from the answer.
#include "client/interface.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"
#include "tests/support/restexchange.h"

#include <core/basicexception.h>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

struct OpenInterface : Interface
{
    using Interface::headers;
    using Interface::timeout;
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
    QSharedPointer<SaleDocument> document = builder::check({});
    QSharedPointer<DocumentCardRecord> card = builder::card(u"2000"_s);
};

} // namespace

TEST(Settings, GiveAddressesTimeoutAndCredentials)
{
    const struct
    {
        QVariantHash settings;
        QString url, messageUrl, authorization;
        int timeout;
    } cases[] = {
        {{}, u"http://localhost/api/ax/xpp/v1/a%20b"_s, u"http://localhost/api/twofa/msg/v1/a%20b"_s, u"Og=="_s, 10000},
        {{{u"Kvo:host"_s, u"https://h:81/other?x=1"_s},
          {u"Kvo:path"_s, u"/путь/"_s},
          {u"Kvo:verificationPath"_s, u"/sms"_s},
          {u"Kvo:user"_s, u"u"_s},
          {u"Kvo:password"_s, u"p:%1"_s},
          {u"Kvo:timeout"_s, 5}},
         u"https://h:81/%D0%BF%D1%83%D1%82%D1%8C/a%20b"_s,
         u"https://h:81/sms/a%20b"_s,
         u"dTpwOiUx"_s,
         5},
    };
    for (const auto &c : cases) {
        const FakeConfig config(c.settings);
        const OpenInterface client;
        EXPECT_EQ(client.getUrl(u"a b"_s).toString(QUrl::FullyEncoded), c.url);
        EXPECT_EQ(client.getVerificationUrl(u"a b"_s).toString(QUrl::FullyEncoded), c.messageUrl);
        EXPECT_EQ(client.headers, (QHash<QString, QString>{{u"Authorization"_s, u"Basic "_s + c.authorization},
                                                           {u"Content-Type"_s, u"application/json"_s}}));
        EXPECT_EQ(client.timeout, c.timeout);
    }
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
    client.loyaltyBonusInfo(QString(), u"7"_s);
    EXPECT_EQ(exchange.sentUrl.toString(),
              u"http://localhost/api/loyaltyBalanceInfo?Brand=B&CardNumber=&CustAccountNum=7");
    answerWith(R"({"success": true, "data": [1]})");
    EXPECT_EQ(client.loyaltyBonusInfo(QString(), u"7"_s), 0);
}

TEST_F(ServiceCalls, MessagesGoOutUnderTheLoyaltyBrand)
{
    answerWith(R"({"success": true})");
    client.verification(u"код 1234"_s, u"+7900"_s);
    EXPECT_EQ(exchange.sentBody, json(R"({"brand": "B", "phone": "+7900", "text": "код 1234", "channel": "sms"})"));
}

TEST_F(ServiceCalls, OrdersAreKeptOnTheCardOnceAccepted)
{
    answerWith(R"({"success": true, "result": {"redeemPoints": [{"points": 10}, {"points": 2.5}, {}, 7]}})");
    const Response response = client.createOrder(document, card, true);
    EXPECT_EQ(response.basket, exchange.sentBody.value("basket"_L1).toString());
    EXPECT_EQ(response.basket.size(), 36);
    EXPECT_EQ(response.redeemPointsAmount(), 12.5);
    EXPECT_TRUE(card->getOperationId().isEmpty());
    const QJsonDocument accepted = client.postOrderRequest(card).payload;
    EXPECT_EQ(accepted.object(), exchange.sentBody);

    answerWith(R"({"success": false})");
    EXPECT_THROW(client.calculateOrder(document, card), BasicException);
    EXPECT_EQ(client.postOrderRequest(card).payload, accepted);
}

TEST_F(ServiceCalls, BindingAndCancellationNameTheOrder)
{
    card->setOperationId(u"basket-1"_s);
    QJsonObject expected = json(R"({"brand": "B", "cardNumber": "2000", "onlineStore": "S", "basket": "basket-1",
                                    "terminal": "T"})");
    EXPECT_EQ(client.cancelOrderRequest(document, card).payload.object(), expected);
    expected.insert("orderID"_L1, document->getIdentifier());
    EXPECT_EQ(client.bindOrderIdRequest(document, card).payload.object(), expected);
}

} // namespace kvo
