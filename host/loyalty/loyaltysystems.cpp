#include "loyaltysystems.h"

#include <algorithm>

bool LoyaltySystems::add(BasicLoyaltySystem *system)
{
    if (!system || m_systems.contains(system))
        return false;
    m_systems.append(system);
    return true;
}

bool LoyaltySystems::remove(BasicLoyaltySystem *system)
{
    return m_systems.removeOne(system);
}

BasicLoyaltySystem *LoyaltySystems::findByCard(const DocumentCardRecord &card) const
{
    const int code = card.getLoyaltySystemCode();
    const auto found = std::find_if(m_systems.cbegin(), m_systems.cend(), [code](const BasicLoyaltySystem *system) {
        return system->getLoyaltySystemCode() == code;
    });
    return code == 0 || found == m_systems.cend() ? nullptr : *found;
}
