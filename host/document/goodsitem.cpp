// A line of a check: its sums, and its form as plain variants.
#include "goodsitem.h"

#include "jsonwriter.h"
#include "storedmap.h"

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

// A quantity such as 1.005 is no exact double: it is taken to the millionth first, so that 1.005 kg at 1.00 cost 1.01
// and not 1.00. Amounts that no check can hold become zero, as with Money::fromRubles().
Money multiply(Money price, double quantity)
{
    constexpr long double parts = 1'000'000;
    constexpr long double limit = 9'000'000'000'000'000'000.0L;
    const long double kopecks =
        std::round(static_cast<long double>(price.kopecks()) * std::round(quantity * parts) / parts);
    return std::abs(kopecks) < limit ? Money::fromKopecks(static_cast<qint64>(kopecks)) : Money();
}

void write(const Tmc &tmc, JsonWriter &json)
{
    json.add("code"_L1, tmc.getCode());
    json.add("name"_L1, tmc.getName());
    json.add("minPrice"_L1, tmc.getMinPrice().kopecks());
    json.add("priceSourceType"_L1, tmc.getPriceSourceType());
}

QSharedPointer<Tmc> readTmc(const StoredMap &map)
{
    const auto tmc = QSharedPointer<Tmc>::create();
    tmc->setCode(map.text(u"code"_s));
    tmc->setName(map.text(u"name"_s));
    tmc->setMinPrice(map.money(u"minPrice"_s));
    tmc->setPriceSourceType(static_cast<EPriceSourceType>(map.integer(u"priceSourceType"_s)));
    return tmc;
}

} // namespace

GoodsItem::GoodsItem() : m_tmc(QSharedPointer<Tmc>::create())
{}

GoodsItem::~GoodsItem() = default;

Money GoodsItem::getSum() const
{
    return multiply(m_price, m_quantity);
}

double GoodsItem::getDiscountApplyLimit(bool respectMinPrice) const
{
    const Money kept = respectMinPrice ? multiply(m_tmc->getMinPrice(), m_quantity) : Money();
    return std::max(getTotal() - kept, Money()).toRubles();
}

QVariantMap GoodsItem::toMap() const
{
    return JsonWriter::toMap(JsonWriter::of([this](JsonWriter &json) { writeTo(json); }));
}

void GoodsItem::writeTo(JsonWriter &json) const
{
    json.add("posnum"_L1, m_posnum);
    json.addObject("tmc"_L1, [&] { write(*m_tmc, json); });
    json.add("additionalBarcode"_L1, m_additionalBarcode);
    json.add("quantity"_L1, m_quantity);
    json.add("price"_L1, m_price.kopecks());
    json.add("allowDiscount"_L1, m_allowDiscount);
    json.add("allowBonusEarn"_L1, m_allowBonusEarn);
    json.add("campaignLabels"_L1, m_campaignLabels);
}

QSharedPointer<GoodsItem> GoodsItem::fromMap(const QVariantMap &map)
{
    const StoredMap stored(map);
    const auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(stored.integer(u"posnum"_s));
    item->setTmc(readTmc(StoredMap(stored.map(u"tmc"_s))));
    item->setAdditionalBarcode(stored.text(u"additionalBarcode"_s));
    item->setQuantity(stored.number(u"quantity"_s));
    item->setPrice(stored.money(u"price"_s));
    item->setAllowDiscount(stored.flag(u"allowDiscount"_s));
    item->setAllowBonusEarn(stored.flag(u"allowBonusEarn"_s));
    item->setCampaignLabels(stored.list(u"campaignLabels"_s));
    return item;
}
