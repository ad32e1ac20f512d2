// A discount on a check, and its form as plain variants.
#include "documentimpact.h"

#include <core/serder.h>

using namespace Qt::Literals::StringLiterals;

namespace {

QVariantMap toPlainMap(const DocumentImpactDetail &detail)
{
    return serder::gadgetToMap(DocumentImpactDetail::staticMetaObject, &detail);
}

QSharedPointer<DocumentImpactDetail> readDetail(const QVariantMap &map)
{
    const auto detail = QSharedPointer<DocumentImpactDetail>::create();
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
    QVariantList details;
    for (const auto &share : m_details)
        details.append(toPlainMap(*share));
    return {{u"totals"_s, toPlainMap(*m_totals)}, {u"details"_s, details}};
}

void DocumentImpact::readMap(const QVariantMap &map)
{
    m_totals = readDetail(map.value(u"totals"_s).toMap());
    m_details.clear();
    const QVariantList details = map.value(u"details"_s).toList();
    for (const QVariant &share : details)
        m_details.append(readDetail(share.toMap()));
}
