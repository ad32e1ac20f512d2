// Puts the till together in the order in which its parts need each other.
#include "sellingtill.h"

#include "queuesender.h"

#include <core/singleton.h>

namespace till {

SellingTill::SellingTill(const QString &configFile, const QSharedPointer<CashierUi> &cashier)
    : m_host(configFile, TillHost::Access::Work),
      m_loyalty(m_host.pluginFolder()),
      m_session(std::make_unique<CheckSession>(m_loyalty.system(), m_host.queue()))
{
    m_drain.setHandler(loyaltyQueueOwner, makeLoyaltySender());
    m_drain.start();
    Singleton<CashierUi>::replace(cashier);
}

SellingTill::~SellingTill()
{
    // Session and store keep impacts that the plugin has made: they must go before its code does.
    m_session.reset();
    Singleton<CheckStore>::replace(nullptr);
    Singleton<CashierUi>::replace(nullptr);
}

} // namespace till
