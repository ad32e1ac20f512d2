// Tables and numbers for the window.
#pragma once

#include "till/goods.h"
#include "tillview.h"

#include <checks/checkstore.h>
#include <queue/queueadmin.h>

namespace till {

/// With two decimals and groups of thousands, as QLocale's default writes them.
QString moneyText(Money sum);

/// The lines of a check; a row's id is the line's number.
Page linesPage(const QList<ResultLine> &lines);

/// Articles to choose from; a row's id is the entry that puts it on the check.
Page goodsPage(const QList<Goods> &goods);

/// Queued requests; a row's id is the request's number.
Page queuePage(const QList<QueueAdmin::Entry> &entries);

/// Checks that were put aside, each with what is on it where it can be read; a row's id is the check's identifier.
Page parkedPage(const QList<std::pair<CheckStore::KeptCheck, CheckResult>> &checks);

/// Finished checks with the day's totals; a row's id is the check's identifier.
Page journalPage(const QList<CheckResult> &finished);

} // namespace till
