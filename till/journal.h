// The journal as `kvo-till journal` prints it.
#pragma once

#include <checks/checkstore.h>

namespace till {

/// One line for each finished check: its entry as JSON, or a text for people with all but the last four digits of the
/// card number masked.
QString journalText(const QList<CheckStore::JournalEntry> &entries, bool json);

} // namespace till
