// A discount on a check, and its form on disk.
#include "documentimpact.h"

#include "jsonwriter.h"

#include <core/serder.h>

#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace {

// Most shares differ from their totals in nothing or in the position, so that an impact takes half of the room.
void writeDifferences(JsonWriter &json, const DocumentImpactDetail &detail, const DocumentImpactDetail &base)
{
    const auto add = [&](QLatin1StringView name, auto get) {
        const auto value = std::invoke(get, detail);
        if (!JsonWriter::isSame(value, std::invoke(get, base)))
            json.add(name, value);
    };
    add("cardIndex"_L1, &DocumentImpactDetail::getCardIndex);
    add("dateTime"_L1, &DocumentImpactDetail::getDateTime);
    add("discountType"_L1, &DocumentImpactDetail::getDiscountType);
    add("discountMode"_L1, &DocumentImpactDetail::getDiscountMode);
    add("discountName"_L1, &DocumentImpactDetail::getDiscountName);
    add("discountObject"_L1, &DocumentImpactDetail::getDiscountObject);
    add("position"_L1, &DocumentImpactDetail::getPosition);
    add("discountRate"_L1, &DocumentImpactDetail::getDiscountRate);
    add("discountSum"_L1, &DocumentImpactDetail::getDiscountSum);
    add("impactSource"_L1, &DocumentImpactDetail::getImpactSource);
    add("minPriceIgnored"_L1, &DocumentImpactDetail::isMinPriceIgnored);
    add("valutCode"_L1, &DocumentImpactDetail::getValutCode);
}

QSharedPointer<DocumentImpactDetail> readDetail(const QVariantMap &map, const DocumentImpactDetail &base)
{
    const auto detail = QSharedPointer<DocumentImpactDetail>::create(base);
    serder::mapToGadget(DocumentImpactDetail::staticMetaObject, detail.data(), map);
    return detail;
}

} // namespace

DocumentImpact::DocumentImpact(const QSharedPointer<DocumentImpactDetail> &totals) : m_totals(totals)
{}

DocumentImpact::~DocumentImpact() = default;

void DocumentImpact::addDetailForPosition(int position, double sum)
{
    const auto share = QSharedPointer<DocumentImpactDetail>::create(*m_totals);
    share->setPosition(position);
    share->setDiscountSum(sum);
    m_details.append(share);
}

void DocumentImpact::setCardRecord(const QSharedPointer<DocumentCardRecord> &cardRecord)
{
    m_totals->setCardRecord(cardRecord);
    for (const auto &share : std::as_const(m_details))
        share->setCardRecord(cardRecord);
}

QVariantMap DocumentImpact::toMap() const
{
    return JsonWriter::toMap(JsonWriter::of([this](JsonWriter &json) { writeTo(json); }));
}

void DocumentImpact::writeTo(JsonWriter &json) const
{
    json.addObject("totals"_L1, [&] { writeDifferences(json, *m_totals, DocumentImpactDetail()); });
    json.addList("details"_L1, m_details, [&](const auto &share) { writeDifferences(json, *share, *m_totals); });
}

void DocumentImpact::readMap(const QVariantMap &map)
{
    m_totals = readDetail(map.value(u"totals"_s).toMap(), DocumentImpactDetail());
    m_details.clear();
    const QVariantList details = map.value(u"details"_s).toList();
    for (const QVariant &share : details)
        m_details.append(readDetail(share.toMap(), *m_totals));
}
