// What the check desk works with.
#pragma once

#include "checkdesk.h"
#include "till/catalogue.h"
#include "till/sellingtill.h"

namespace till {

struct CheckDesk::Parts
{
    Parts(const QString &configFile, const QSharedPointer<CashierUi> &cashier)
        : till(configFile, cashier), catalogue(till.host().goodsFile())
    {}

    SellingTill till;
    Catalogue catalogue;
};

} // namespace till
