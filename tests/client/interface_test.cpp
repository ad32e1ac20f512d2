// Settings, queries, the form of a stored request, and the judgement of answers: what is an error, what is only logged,
// what may be sent again.
#include "client/interface.h"
#include "client/refusal.h"
#include "tests/support/json.h"
#include "tests/support/logfile.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"

namespace kvo {

enum class Outcome { Good, Logged, Failed, Rejected };
using enum Outcome;
using Error = QNetworkReply::NetworkError;

struct OpenInterface : Interface
{
    using Interface::headers;
    using Interface::timeout;
};

struct Judgement
{
    const char *name;
    int status;
    const char *body;
    Outcome now, fromQueue;
    QString text = {};
    Error error = Error::NoError;
};

const Judgement judgements[] = {
    {"success", 200, R"({"success": true, "data": {}})", Good, Good},
    {"nothing to judge", 500, R"({"data": 1})", Good, Good},
    {"no JSON", 200, "", Good, Good},
    {"error code zero", 200, R"({"error": {"errorCode": 0}})", Good, Good},
    {"an error", 200, R"({"success": true, "error": {"errorCode": 1, "description": "x"}})", Rejected, Rejected,
     u"x"_s},
    {"refused 200", 200, R"({"success": false, "message": "m"})", Rejected, Logged, u"m"_s},
    {"refused 400", 400, R"({"success": false, "message": "m"})", Rejected, Logged, u"m"_s},
    {"refused 404", 404, R"({"success": false, "message": "m"})", Rejected, Rejected, u"m"_s},
    {"refused 500", 500, R"({"success": false, "message": "m"})", Failed, Logged, u"m"_s},
    {"success as text", 404, R"({"success": "true"})", Rejected, Rejected, u"нет ответа"_s},
    {"refusal wins over error", 404,
     R"({"success": false, "message": "m", "error": {"errorCode": 5, "description": "x"}})", Rejected, Rejected,
     u"m"_s},
    {"refused 500, with an error", 500, R"({"success": false, "message": "m"})", Failed, Logged, u"m"_s,
     Error::InternalServerError},
    {"no connection", 0, "", Failed, Failed, u"нет ответа"_s, Error::ConnectionRefusedError},
    {"cut after the status", 200, "", Failed, Failed, u"нет ответа"_s, Error::RemoteHostClosedError},
};

Outcome judge(const Judgement &judgement, bool logOnly, LogFile &log)
{
    const http::Response answer(judgement.status, judgement.error, tr::Tr(u"нет ответа"_s),
                                QJsonDocument::fromJson(judgement.body));
    try {
        Interface(utils::ForMock()).checkForError(answer, logOnly);
    } catch (const BasicException &error) {
        EXPECT_EQ(error.text().ru(), judgement.text);
        return dynamic_cast<const Refusal *>(&error) ? Rejected : Failed;
    }
    const QString logged = log.take();
    EXPECT_TRUE(logged.isEmpty() || logged.contains(judgement.text)) << logged.toStdString();
    return logged.isEmpty() ? Good : Logged;
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
    LogFile log;
    for (const Judgement &judgement : judgements) {
        SCOPED_TRACE(judgement.name);
        EXPECT_EQ(judge(judgement, false, log), judgement.now);
        EXPECT_EQ(judge(judgement, true, log), judgement.fromQueue);
    }
    for (const auto &[later, statuses] : {std::pair(Failed, QList<int>{401, 403, 407, 408, 429, 501, 599}),
                                          {Rejected, {402, 404, 406, 409, 428, 430, 499}}})
        for (const int status : statuses)
            EXPECT_EQ(judge({"", status, R"({"success": false})", later, later, u"нет ответа"_s}, true, log), later)
                << status;
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
