// Loyalty points spent, as a discount on a check.
#pragma once

#include <document/documentimpact.h>
#include <poshost_export.h>

#include <QtCore/QMetaType>

class POSHOST_EXPORT BonusImpact : public DocumentImpact
{
public:
    using DocumentImpact::DocumentImpact;
    ~BonusImpact() override;
};

using BonusImpactPtrList = QList<QSharedPointer<BonusImpact>>;
Q_DECLARE_METATYPE(BonusImpactPtrList)
