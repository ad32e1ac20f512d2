// A discount on a check: its totals and its share of each position.
#pragma once

#include <document/documentimpactdetail.h>
#include <poshost_export.h>

#include <QtCore/QList>

class POSHOST_EXPORT DocumentImpact
{
public:
    /// `totals` describes the whole impact and is shared with the caller.
    explicit DocumentImpact(const QSharedPointer<DocumentImpactDetail> &totals);
    virtual ~DocumentImpact();

    virtual QSharedPointer<DocumentImpactDetail> getTotals() const { return m_totals; }

    /// The shares of the positions, in the order in which they were added.
    virtual QList<QSharedPointer<DocumentImpactDetail>> getDetails() const { return m_details; }

    /// Adds the share of one position: a copy of the totals with this position and sum (rubles).
    void addDetailForPosition(int position, double sum);

    /// Replaces the shares of the positions; the totals stay.
    void setDetails(const QList<QSharedPointer<DocumentImpactDetail>> &details) { m_details = details; }

    /// The card that gave the impact, on the totals and on every share.
    QSharedPointer<DocumentCardRecord> getCardRecord() const { return m_totals->getCardRecord(); }
    void setCardRecord(const QSharedPointer<DocumentCardRecord> &cardRecord);

    static constexpr auto storedFields()
    {
        using Totals = QSharedPointer<DocumentImpactDetail>;
        return std::tuple{
            StoredField("totals", &DocumentImpact::m_totals, [](const Totals &totals) { return !totals.isNull(); }),
            StoredField("details", &DocumentImpact::m_details)};
    }

private:
    QSharedPointer<DocumentImpactDetail> m_totals;
    QList<QSharedPointer<DocumentImpactDetail>> m_details;
};
