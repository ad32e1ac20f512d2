// Tables for the window, made on the check thread.
#pragma once

#include "till/goods.h"
#include "tillview.h"

#include <checks/checkstore.h>
#include <queue/queueadmin.h>

namespace till {

/// Articles to choose from; a row's id is the entry that puts it on the check.
Listing goodsListing(const QList<Goods> &goods);

/// Queued requests; a row's id is the request's number.
Listing queueListing(const QList<QueueAdmin::Entry> &entries);

/// Checks that were put aside; a row's id is the check's identifier.
Listing parkedListing(const QList<CheckStore::KeptCheck> &checks);

/// Finished checks with the day's totals; a row's id is the check's identifier.
Listing journalListing(const QList<CheckResult> &finished);

} // namespace till
