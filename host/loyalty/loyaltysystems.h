// The loyalty systems registered at this till.
#pragma once

#include <loyalty/basicloyaltysystem.h>
#include <poshost_export.h>

/// The registry behind BasicLoyaltySystem::registerLoyaltySystem(), one per process through Singleton. Used on the
/// check thread only; systems are not owned.
class POSHOST_EXPORT LoyaltySystems
{
public:
    /// For BasicLoyaltySystem, whose destructor removes a system that is still registered. False when the system is
    /// registered already.
    bool add(BasicLoyaltySystem *system);
    /// False when the system is not registered.
    bool remove(BasicLoyaltySystem *system);

    /// The system that answers for the card; null when none does.
    BasicLoyaltySystem *findByCard(const DocumentCardRecord &card) const;

private:
    QList<BasicLoyaltySystem *> m_systems;
};
