#include "documentimpact.h"

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
