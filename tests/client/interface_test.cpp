// Settings, queries, the form of a stored request, and the judgement of answers: what is an error, what is only logged,
// what may be sent again.
#include "client/interface.h"
#include "client/refusal.h"
#include "tests/support/golden.h"
#include "tests/support/json.h"
#include "tests/support/logfile.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"

namespace kvo {

struct OpenInterface : Interface
{
    using Interface::headers;
    using Interface::timeout;
};

/// What becomes of an answer to a request of the till, or from the queue.
QString judged(const http::Response &answer, bool isFromQueue)
{
    LogFile log;
    try {
        Interface(utils::ForMock()).checkForError(answer, isFromQueue);
    } catch (const Refusal &refusal) {
        return u"refused: "_s + refusal.text().ru();
    } catch (const BasicException &error) {
        return u"failed: "_s + error.text().ru();
    }
    const QString logged = log.take();
    return logged.isEmpty() ? u"accepted"_s : logged.section(u"] "_s, 1).trimmed();
}

TEST(Settings, GiveAddressesTimeoutAndCredentials)
{
    const std::tuple<QVariantHash, QString, QString, QString, int> cases[] = {
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
        {{{u"Kvo:host"_s, u"http://h:80a80"_s}}, {}, {}, u"Og=="_s, 10000}, // Nothing may go to port 80.
    };
    for (const auto &[settings, url, messageUrl, authorization, timeout] : cases) {
        const FakeConfig config(settings);
        const OpenInterface client;
        EXPECT_EQ(client.getUrl(u"a b"_s).toString(QUrl::FullyEncoded), url);
        EXPECT_EQ(client.getVerificationUrl(u"a b"_s).toString(QUrl::FullyEncoded), messageUrl);
        EXPECT_EQ(client.headers, (QHash<QString, QString>{{u"Authorization"_s, u"Basic "_s + authorization},
                                                           {u"Content-Type"_s, u"application/json"_s}}));
        EXPECT_EQ(client.timeout, timeout);
    }
}

TEST(Settings, PlainHttpToAnotherMachineIsWarnedAboutOnce)
{
    LogFile log;
    for (const char *host :
         {"http://x:80a80", "http://localhost:8080", "http://127.0.0.1", "https://safe", "http://h", "http://other"}) {
        const FakeConfig config({{u"Kvo:host"_s, QString::fromLatin1(host)}});
        Interface();
    }
    const QString lines = log.take();
    EXPECT_EQ(lines.count(u" WARN kvo - Обмен с h "_s), 1) << lines.toStdString();
    EXPECT_EQ(lines.count(u'\n'), 1);
}

TEST(Queries, NameWhatTheyAskForAndReadTheData)
{
    const FakeConfig config({{u"Kvo:brand"_s, u"B"_s}, {u"Kvo:verificationBrand"_s, u"V"_s}});
    RestExchange exchange;
    const OpenInterface client;
    const std::tuple<std::function<QJsonValue()>, const char *, const char *, QJsonValue> cases[] = {
        {[&] { return client.searchCustomer(u"+7 50%&Ё"_s, ECardNumberType::Phone); },
         "searchCustomer?Brand=B&Phone=%2B7%2050%25%26%D0%81", R"({"a": 1})", QJsonObject{{u"a"_s, 1}}},
        {[&] { return client.searchCustomer({}, ECardNumberType::Scanned); },
         "searchCustomer?Brand=B&CardNumber=", "[1]", QJsonObject()},
        {[&] { return client.cardInfo(u"1"_s, u"C"_s); }, "cardInfo?Brand=B&CardNumber=1&CustAccountNum=C",
         R"({"a": 1})", QJsonObject{{u"a"_s, 1}}},
        {[&] { return client.loyaltyBonusInfo(u"1"_s, u"C"_s); },
         "loyaltyBalanceInfo?Brand=B&CardNumber=1&CustAccountNum=C", R"({"AmountQty": 12.5})", 12.5},
        {[&] { return client.loyaltyBonusInfo(u"1"_s, {}); },
         "loyaltyBalanceInfo?Brand=B&CardNumber=1&CustAccountNum=", R"({"AmountQty": "12.5"})", 0},
    };
    for (const auto &[ask, call, data, result] : cases) {
        exchange.answer = exchange.ok(R"({"success": true, "data": )" + QByteArray(data) + "}");
        EXPECT_EQ(ask(), result) << call;
        EXPECT_EQ(exchange.calls.last(), QString::fromUtf8(call));
        EXPECT_EQ(exchange.sentOp, QNetworkAccessManager::GetOperation);
        EXPECT_EQ(exchange.sentHeaders, client.headers);
        exchange.failures = {exchange.calls.last().section(u'?', 0, 0)};
        EXPECT_THROW(ask(), BasicException) << call;
    }
    client.verification(u"code 1"_s, u"+7"_s);
    EXPECT_EQ(exchange.sentUrl.path(), u"/api/twofa/msg/v1/send"_s);
    EXPECT_EQ(exchange.sentOp, QNetworkAccessManager::PostOperation);
    EXPECT_EQ(exchange.sentHeaders, client.headers);
    EXPECT_EQ(exchange.bodies.last(), json(R"({"brand": "B", "phone": "+7", "text": "code 1", "channel": "sms"})"));
    exchange.failures = {u"send"_s};
    EXPECT_THROW(client.verification({}, {}), BasicException);
}

TEST(Transport, JudgesAnswers)
{
    expectCases(u"client/answers.txt"_s, [](const QByteArray &in) {
        const QByteArrayList words = in.split(' ');
        const auto error = QVariant(QString::fromLatin1(words[1])).value<QNetworkReply::NetworkError>();
        const http::Response answer(words[0].toInt(), error, tr::Tr(u"нет ответа"_s),
                                    QJsonDocument::fromJson(words.mid(2).join(' ')));
        return u"till: %1; queue: %2"_s.arg(judged(answer, false), judged(answer, true));
    });
}

// What one run of the till stores, a later one must send.
TEST(Transport, SendsAQueuedEventAsItWasStored)
{
    const FakeConfig config({{u"Kvo:timeout"_s, 1234}});
    RestExchange exchange;
    exchange.answer = RestExchange::response(400, R"({"success": false, "message": "m"})");
    const Request order{QNetworkAccessManager::PostOperation,
                        QUrl(u"http://h/postOrder?q=%2B7%20a&name=Ёж"_s),
                        {{u"A"_s, u"b"_s}},
                        QJsonDocument(json(R"({"basket": "1", "lines": [{"isSale": true}]})"))};
    const QJsonObject stored = json(R"({"op": 4, "url": "http://h/postOrder?q=%2B7%20a&name=%D0%81%D0%B6",
        "headers": {"A": "b"}, "payload": {"basket": "1", "lines": [{"isSale": true}]}})");
    EXPECT_EQ(order.toQueueEvent(), stored);
    Interface().requestFromQueue(stored);
    EXPECT_EQ(exchange.timeout, 1234);
    EXPECT_EQ(exchange.sentOp, order.op);
    EXPECT_EQ(exchange.sentUrl, order.url);
    EXPECT_EQ(exchange.bodies.last(), order.payload.object());
    EXPECT_EQ(exchange.sentHeaders, order.headers);
    const std::pair<const char *, int> operations[] = {{"0", 0},   {"1", 1},     {"6", 6},     {"7", 0},   {"-1", 0},
                                                       {"4.5", 0}, {"1e300", 0}, {"\"4\"", 0}, {"null", 0}};
    for (const auto &[op, read] : operations)
        EXPECT_EQ(static_cast<int>(Request::fromQueueEvent(json(R"({"op": )" + QByteArray(op) + "}")).op), read) << op;
}

} // namespace kvo
