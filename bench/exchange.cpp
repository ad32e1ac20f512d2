// One exchange as the plugin makes it, beside bare libcurl and beside Qt's own client.
#include "barecurl.h"
#include "comparisons.h"
#include "networkaccess.h"
#include "samples.h"
#include "tests/support/fakeconfig.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

constexpr int exchangesPerRepetition = 10;

QJsonObject cardInfo(const kvo::Interface &client)
{
    return client.cardInfo(u"7770000000001"_s, u"C-0001"_s);
}

/// A client of the service of fixed answers.
struct ServedClient
{
    AnswerServer server{answers(0)};
    FakeConfig config{settings(server)};
    kvo::Interface client;
    Exchange exchange = record([this] { cardInfo(client); }).first();
    Side ours = calls(exchangesPerRepetition, [this] { benchmark::DoNotOptimize(cardInfo(client)); });
};

/// A call with its twin, and the slowest of each.
struct Twins
{
    std::function<void()> call;
    Exchange exchange = record(call).first();
    double slowest = 0;
    double slowestTwin = 0;
};

std::function<void()> pricing(const kvo::Interface &client, int lines)
{
    const auto card = makeCard();
    card->setOperationId(client.createUuid());
    return [&client, card, check = makeCheck(lines)] { std::ignore = client.calculateOrder(check, card); };
}

} // namespace

void exchangeVsCurl(Pairs &pairs)
{
    const ServedClient served;
    BareCurl curl(served.exchange);
    pairs.run(served.ours,
              calls(exchangesPerRepetition, [&] { benchmark::DoNotOptimize(curl.send(served.exchange)); }));
}

void exchangeVsQnam(Pairs &pairs)
{
    const ServedClient served;
    NetworkAccess network;
    const auto ask = [&, request = NetworkAccess::requestOf(served.exchange)] {
        return network.send(request, {}).value("data"_L1).toObject();
    };
    require(ask() == cardInfo(served.client), "cardInfo: the two clients read different answers");
    pairs.run(served.ours, calls(exchangesPerRepetition, [&] { benchmark::DoNotOptimize(ask()); }));
}

double stall(const QString &url)
{
    constexpr int exchanges = 10'000;
    constexpr double millisecondsPerSecond = 1000;
    const FakeConfig config(settings(url));
    const kvo::Interface client;
    // Without a body, with one of some segments, and with one that is more than is sent without acknowledgements.
    Twins kinds[] = {{[&] { cardInfo(client); }}, {pricing(client, 20)}, {pricing(client, 1000)}};
    BareCurl curl(kinds[0].exchange);
    for (int i = 0; i < exchanges; ++i) {
        // The largest costs the service a hundredfold. A stall would meet every one of them: a few will do.
        Twins &twins = kinds[i % 50 == 0 ? 2 : i % 2];
        twins.slowest = std::max(twins.slowest, secondsOf(twins.call));
        twins.slowestTwin = std::max(twins.slowestTwin, secondsOf([&] { curl.send(twins.exchange); }));
    }
    double worst = 0;
    for (const Twins &twins : kinds)
        worst = std::max(worst, twins.slowest - twins.slowestTwin);
    return worst * millisecondsPerSecond;
}

} // namespace bench
