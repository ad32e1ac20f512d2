// What counts as delivered, and where a request goes that has waited while the till was given other settings.
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"
#include "till/queuesender.h"

namespace {

enum class Outcome { Delivered, Kept, DeadLetter };

Outcome send(const QJsonObject &event)
{
    try {
        till::makeLoyaltySender()(event);
        return Outcome::Delivered;
    } catch (const QueueRefusal &) {
        return Outcome::DeadLetter;
    } catch (const BasicException &) {
        return Outcome::Kept;
    }
}

TEST(QueueSender, KeepsWhatTheServiceHasNotAccepted)
{
    const std::tuple<int, const char *, Outcome> cases[] = {
        {200, R"({"success": true})", Outcome::Delivered},
        {202, "", Outcome::Delivered},
        {200, R"({"result": {}})", Outcome::Delivered},
        {404, R"({"success": true})", Outcome::Delivered},
        {404, R"({"message": "no route"})", Outcome::Kept},
        {300, R"({"message": "log in"})", Outcome::Kept},
        {500, "{}", Outcome::Kept},
        {500, R"({"success": false, "message": "m"})", Outcome::Kept},
        {200, R"({"success": false, "message": "m"})", Outcome::DeadLetter},
        {404, R"({"success": false, "message": "m"})", Outcome::DeadLetter},
        {200, R"({"success": true, "error": {"errorCode": 104}})", Outcome::DeadLetter},
    };
    const FakeConfig config({});
    RestExchange exchange;
    for (const auto &[status, body, outcome] : cases) {
        exchange.answer = RestExchange::response(status, body);
        EXPECT_EQ(send({{u"op"_s, 4}, {u"url"_s, u"http://h/postOrder"_s}}), outcome) << status << body;
    }
}

TEST(QueueSender, SendsToTheAddressAndWithThePasswordOfNow)
{
    const QJsonObject stored =
        json(R"({"op": 4, "url": "http://u:p@old:8080/other/postOrder?q=%2B7", "payload": {"basket": "1"},
                 "headers": {"Authorization": "Basic old", "Content-Type": "application/json"}})");
    const std::pair<QString, QString> cases[] = {
        {u"http://old:8080"_s, u"http://old:8080/other/postOrder?q=%2B7"_s},
        {u"http://old:9090"_s, u"http://old:9090/other/postOrder?q=%2B7"_s},
        {u"https://new/path"_s, u"https://new/other/postOrder?q=%2B7"_s},
        {u"https://n:x@[::1]:1"_s, u"https://n:x@[::1]:1/other/postOrder?q=%2B7"_s},
        {u"http://old:99999"_s, {}},
    };
    RestExchange exchange;
    for (const auto &[host, sentTo] : cases) {
        const FakeConfig config({{u"Kvo:host"_s, host}, {u"Kvo:user"_s, u"u"_s}, {u"Kvo:password"_s, u"p"_s}});
        EXPECT_EQ(send(stored), Outcome::Delivered);
        EXPECT_EQ(exchange.sentUrl.toString(QUrl::FullyEncoded), sentTo);
        EXPECT_EQ(exchange.sentUrl.isValid(), !sentTo.isEmpty());
        EXPECT_EQ(exchange.sentHeaders.value(u"Authorization"_s), u"Basic dTpw");
        EXPECT_EQ(exchange.bodies.last(), stored.value("payload"_L1).toObject());
    }
}

} // namespace
