// The service as a client sees it: authentication, queries, refusals of what is malformed, and faults on demand.
#include "simulatorfixture.h"
#include "tests/support/golden.h"

#include <poll.h>

#include <QtCore/QDateTime>
#include <QtCore/QProcess>

#include <algorithm>
#include <future>

namespace sim {

using Http = SimulatorTest;

TEST_F(Http, RefusesWrongCredentials)
{
    caller.http.set_basic_auth("u", "wrong");
    EXPECT_EQ(caller.query("searchCustomer?Brand=K&CardNumber=7770000000001").status, 401);
    EXPECT_EQ(caller.call("createOrder", "b").status, 401);
}

TEST_F(Http, RefusesWrongBodiesNamingTheField)
{
    // Where a good body is changed, to what, and the reason that the log has for the refusal.
    expectCases(u"simulator/bodies.txt"_s, [this](const QByteArray &change) {
        Json body = order("b", {line(1, "100.00")});
        const qsizetype blank = change.indexOf(' ');
        body[Json::json_pointer(change.first(blank).toStdString())] = Json::parse(change.mid(blank).toStdString());
        const int status = caller.post("createOrder", body).status;
        const auto reason = caller.requests()["requests"].back()["reason"].get<std::string>();
        return QString::number(status) + u' ' + QString::fromStdString(reason);
    });
    const std::string createOrder = std::string(Api::loyaltyPath) + "createOrder";
    std::string deep = order("b", {}).dump();
    deep.replace(deep.find(R"("0.00")"), 6, std::string(100'000, '[') + std::string(100'000, ']'));
    for (const char *body : {"", "\xff", deep.c_str()})
        EXPECT_EQ(caller.send(createOrder, body).status, 400) << body;
    EXPECT_EQ(caller.http.Post(createOrder, order("b", {}).dump(), "text/plain")->status, 415);
    EXPECT_THAT(caller.ledger()["orders"], IsEmpty());
}

TEST_F(Http, PrintsTheLatestRequestsAndListsMessages)
{
    for (const char *method : {"createOrder", "updateOrder", "bindOrderId"})
        caller.call(method, "b");
    QProcess tail;
    tail.start(QStringLiteral(LOYALTY_SIM_PROGRAM),
               {QStringLiteral("tail"), QStringLiteral("--last=2"), QStringLiteral("--port=%1").arg(port)});
    std::string lines;
    while (std::ranges::count(lines, '\n') < 2 && tail.waitForReadyRead(10'000))
        lines += tail.readAll().toStdString();
    tail.kill();
    tail.waitForFinished();
    EXPECT_THAT(lines, testing::MatchesRegex("[0-9:.]+  updateOrder +200 .* ms  ok\n[0-9:.]+  bindOrderId .*ms  .+\n"));
    caller.send("/api/twofa/msg/v1/send", R"({"brand":"K","phone":"+79001234567","text":"1234","channel":"sms"})");
    EXPECT_EQ(caller.get("/sim/outbox?last=1").json()["messages"][0]["phone"], "+79001234567");
}

TEST(Feed, WakesAWatcherAtEachChangeAndNotBefore)
{
    using namespace std::chrono_literals;
    Feed feed;
    RequestLog log(feed);
    Faults faults({"call"}, {{"close", ""}}, feed);
    const Json twice{{"method", "call"}, {"kind", "close"}, {"times", 2}};
    const std::function<void()> changes[] = {
        [&] { faults.add(twice); },
        [&] { faults.take("call"); },
        [&] { faults.remove(1); },
        [&] { faults.clear(); },
        [&] { log.received("call", "/", ""); },
        [&] { log.answered(0, {}), log.answered(1, {}); }, // 0 is not kept
    };
    const auto begin = std::chrono::steady_clock::now();
    std::uint64_t seen = 0;
    for (const auto &change : changes) {
        auto woken = std::async(std::launch::async, [&] { return feed.wait(seen, 1min); });
        EXPECT_EQ(woken.wait_for(10ms), std::future_status::timeout);
        change();
        EXPECT_EQ(woken.get(), seen + 1);
        ++seen;
    }
    feed.close();
    feed.wait(seen, 1min);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST_F(Http, RefusesAStreamTooMany)
{
    Feed feed;
    const RequestLog log(feed);
    const Faults faults({}, {}, feed);
    EventStream streams(database, log, faults, feed);
    std::array<httplib::Response, EventStream::mostStreams + 1> answers;
    for (httplib::Response &answer : answers)
        streams.serve({}, answer);
    EXPECT_EQ(std::pair((answers.end() - 2)->status, answers.back().status), std::pair(-1, 503));
}

TEST_F(Http, FailsOneRequestWithEachKindOfFault)
{
    // The kind, the status that comes, and the order's state after it.
    const std::tuple<const char *, int, const char *> cases[] = {
        {"status", 500, "none"}, {"close", 0, "created"}, {"close-before", 0, "none"}, {"malformed", 200, "created"}};
    for (const auto &[kind, status, state] : cases) {
        SCOPED_TRACE(kind);
        caller.fault({{"method", "createOrder"}, {"kind", kind}});
        EXPECT_EQ(caller.call("cancelOrder", "other").outcome(), "ok");
        const Received answer = Caller(port).call("createOrder", kind);
        EXPECT_EQ(answer.status, status);
        EXPECT_NE(answer.outcome(), "ok");
        EXPECT_EQ(caller.stateOf(kind), state);
        EXPECT_EQ(caller.call("createOrder", kind).outcome(), "ok");
    }
    EXPECT_EQ(caller.requests()["counts"]["createOrder"], 8);
    const QString before = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    caller.http.Get("/elsewhere");
    const Json last = caller.requests()["requests"].back();
    EXPECT_EQ(last["target"], "/elsewhere");
    EXPECT_GE(last["at"], before.toStdString());
    EXPECT_EQ(caller.balance(), "1300.00");

    caller.fault({{"method", "*"}, {"kind", "status"}, {"times", 100}, {"status", 503}, {"body", {{"x", 1}}}});
    EXPECT_EQ(caller.call("cancelOrder", "b").text, R"({"x":1})");
    EXPECT_EQ(caller.query("cardInfo").status, 503);
    caller.http.Delete("/sim/faults/5");
    EXPECT_EQ(caller.call("cancelOrder", "b").outcome(), "ok");
    caller.fault({{"method", "cancelOrder"}, {"kind", "status"}, {"body", ""}});
    EXPECT_EQ(caller.call("cancelOrder", "b").text, "");
    EXPECT_EQ(caller.http.Delete("/sim/faults/5")->status, 404);
}

TEST_F(Http, ChecksFaultsBeforeItTakesThem)
{
    expectCases(u"simulator/faults.txt"_s, [this](const QByteArray &patch) {
        Json fault{{"method", "createOrder"}, {"kind", "close"}};
        fault.merge_patch(Json::parse(patch.toStdString()));
        const Received refused = caller.send("/sim/faults", fault.dump());
        const auto message = refused.json()["message"].get<std::string>();
        return QString::number(refused.status) + u' ' + QString::fromStdString(message);
    });
}

TEST_F(Http, LetsOnlyPlainRequestsOfItsOwnOriginIn)
{
    const std::string own = "127.0.0.1:" + std::to_string(port);
    const std::pair<httplib::Headers, int> cases[] = {
        {{{"Host", own}}, 200},
        {{{"Host", own}, {"Origin", "http://" + own}}, 200},
        {{{"Host", own}, {"Origin", "http://example.org"}}, 403},
        {{{"Host", own}, {"Origin", "null"}}, 403},
        {{{"Host", "example.org:" + std::to_string(port)}}, 403}, // a foreign name that leads here
        {{{"Host", own}, {"Content-Encoding", "gzip"}}, 415},
        {{{"Host", own}, {"Transfer-Encoding", "chunked"}}, 411},
    };
    for (const auto &[headers, status] : cases)
        EXPECT_EQ(caller.http.Get("/sim/ledger", headers)->status, status) << testing::PrintToString(headers);
    const std::string balance = R"({"account": "C-0001", "balance": "0.00"})";
    EXPECT_EQ(caller.http.Post("/sim/balance", balance, "text/plain")->status, 415);
    const std::string request = "POST /sim/balance HTTP/1.1\r\nContent-Type: application/json\r\nContent-Length: " +
                                std::to_string(balance.size()) + "\r\n\r\n" + balance;
    const auto sendOnceAnswered = [&](std::size_t, std::size_t, httplib::DataSink &sink) {
        pollfd answer{caller.http.socket(), POLLIN, 0};
        return ::poll(&answer, 1, 10'000) == 1 && sink.write(request.data(), request.size());
    };
    for (const std::string &target : {std::string("/sim/balance"), "/sim/balance?" + std::string(9000, 'x')}) {
        caller.http.Post(target, {{"Origin", "http://example.org"}}, request.size(), sendOnceAnswered, "text/plain");
        EXPECT_EQ(Caller(port).balance(), "1500.00") << "the body of a refused request was taken for a request";
    }
    EXPECT_EQ(Caller(port).get("/").status, 404) << "the page is not asked for";
}

} // namespace sim
