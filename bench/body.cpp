// The order's body and its text, beside the same built by hand and beside another JSON library.
#include "comparisons.h"
#include "samples.h"
#include "tests/support/fakeconfig.h"

#include <core/jsontext.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

struct Order
{
    explicit Order(int lines) : check(makeCheck(lines))
    {
        card->setOperationId(u"2f1c8a0e-6a53-4a83-9f0e-6a1d52a5a0b1"_s);
    }

    QJsonObject body() const { return client.createOrderBody(check, card, false); }
    QByteArray text() const { return jsontext::compact(QJsonDocument(body())); } // as it is sent

    FakeConfig config{settings(u"http://127.0.0.1"_s)};
    kvo::Interface client;
    QSharedPointer<SaleDocument> check;
    QSharedPointer<DocumentCardRecord> card = makeCard();
};

int callsPerRepetition(int lines)
{
    return std::max(1, 100 / lines);
}

std::string moneyText(double rubles)
{
    std::array<char, 32> text;
    return {text.data(), static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.2f", rubles))};
}

/// The body from the same check, as one would write it with nlohmann/json.
std::string buildWithNlohmann(const SaleDocument &check, const DocumentCardRecord &card)
{
    std::map<int, double> spent;
    for (const auto &impact : check.getDiscountImpacts()) {
        for (const auto &detail : impact->getDetails())
            spent[detail->getPosition()] += detail->getDiscountSum();
    }
    nlohmann::json lines = nlohmann::json::array();
    for (const auto &item : check.getGoodsItems()) {
        const QVariantList labels = item->getCampaignLabels();
        const auto points = spent.find(item->getPosnum());
        lines.push_back({{"barcode", item->getAdditionalBarcode().toStdString()},
                         {"lineID", std::to_string(item->getPosnum())},
                         {"qty", "1"},
                         {"lineAmount",
                          moneyText((points == spent.end() ? 0 : points->second) + item->getDiscountApplyLimit(false))},
                         {"isSale", item->getTmc()->getPriceSourceType() == EPriceSourceType::Promotion},
                         {"noDiscountAllowed", labels.contains(u"NOSPEND"_s) || !item->isAllowDiscount()},
                         {"noEarnAllowed", labels.contains(u"NOBONUS"_s) || !item->isAllowBonusEarn()},
                         {"paymentDiscAmount", moneyText(0)}});
    }
    const nlohmann::json body{{"brand", "KVO"},
                              {"cardNumber", card.getNumber().toString().toStdString()},
                              {"onlineStore", "SHOP-1"},
                              {"basket", card.getOperationId().toStdString()},
                              {"basketDatetime", check.getDateTime().toString(u"yyyy-MM-dd").toStdString()},
                              {"orderLines", std::move(lines)},
                              {"paymentDiscAmount", moneyText(0)},
                              {"terminal", "TILL-1"}};
    return body.dump();
}

} // namespace

void bodyVsQJson(Pairs &pairs, int lines)
{
    const Order order(lines);
    const OrderTexts texts = textsOf(order.body());
    const auto byHand = [&] { return QJsonDocument(buildByHand(texts)).toJson(QJsonDocument::Compact); };
    require(byHand() == order.text(), "the body by hand differs");
    pairs.run(calls(callsPerRepetition(lines), [&] { benchmark::DoNotOptimize(order.text()); }),
              calls(callsPerRepetition(lines), [&] { benchmark::DoNotOptimize(byHand()); }));
}

void bodyVsNlohmann(Pairs &pairs, int lines)
{
    const Order order(lines);
    const auto other = [&] { return buildWithNlohmann(*order.check, *order.card); };
    require(order.text() == QByteArray::fromStdString(other()), "the body by nlohmann/json differs");
    pairs.run(calls(callsPerRepetition(lines), [&] { benchmark::DoNotOptimize(order.text()); }),
              calls(callsPerRepetition(lines), [&] { benchmark::DoNotOptimize(other()); }));
}

void bodyGrowth(Pairs &pairs)
{
    constexpr int factor = 10;
    const Order large(10'000);
    const Order small(10'000 / factor);
    pairs.run(calls(1, [&] { benchmark::DoNotOptimize(large.text()); }), calls(1, [&] {
                  for (int i = 0; i < factor; ++i)
                      benchmark::DoNotOptimize(small.text());
              }));
}

} // namespace bench
