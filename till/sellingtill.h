// A till that is ready to sell: everything in place, and the drain at work.
#pragma once

#include "checksession.h"
#include "loyalty.h"
#include "tillhost.h"

#include <cashier/cashierui.h>
#include <queue/queuedrain.h>

namespace till {

/// In place while the object lives. One per process.
class SellingTill
{
public:
    /// Takes the data folder for this process; `cashier` answers what the host asks. Throws BasicException when nothing
    /// can be sold, or when the section [Queue] names no queue; a plugin or queue that cannot be used is no reason.
    SellingTill(const QString &configFile, const QSharedPointer<CashierUi> &cashier);
    ~SellingTill();
    Q_DISABLE_COPY_MOVE(SellingTill)

    TillHost &host() { return m_host; }
    QueueDrain &drain() { return m_drain; }
    CheckSession &session() { return *m_session; }
    const BasicLoyaltySystem &system() const { return m_loyalty.system(); }

private:
    TillHost m_host;
    Loyalty m_loyalty;
    QueueDrain m_drain;
    std::unique_ptr<CheckSession> m_session;
};

} // namespace till
