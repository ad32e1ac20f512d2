// All SQL of the queue's operations, for both kinds of database; the tables are in sqlitequeue.cpp and
// postgresqueue.cpp.
#pragma once

#include <QtCore/QStringView>

namespace queuesql {

// Values: owner, basket, text, created.
inline constexpr QStringView push =
    u"INSERT INTO event (owner, basket, event, created, state) VALUES (?, ?, %1, ?, 'waiting')";

// If the event is alone in its order, it is the head. Values: owner, owner, basket.
inline constexpr QStringView pushHead =
    u"INSERT INTO head (id, owner, next_attempt) SELECT id, ?, 0 FROM (SELECT MIN(id) AS id, COUNT(*) AS events FROM "
    u"(SELECT id FROM event WHERE owner = ? AND basket = ? ORDER BY id LIMIT 2) AS two) AS first WHERE events = 1";

inline constexpr QStringView hasDeadLetter =
    u"SELECT EXISTS (SELECT 1 FROM event WHERE owner = ? AND basket = ? AND state = 'dead')";

// The columns of the summary: waiting, blocked. Connections use different rows, so that tills do not wait for each
// other; a total is the sum over all rows. Values: the changes, and the row.
inline constexpr QStringView count = u"UPDATE summary SET waiting = waiting + ?, blocked = blocked + ? WHERE id = ?";
inline constexpr QStringView countAccepted = u"UPDATE summary SET waiting = waiting - ?, last_success = ? WHERE id = ?";
inline constexpr QStringView noteError = u"UPDATE summary SET last_error = ?, last_error_time = ? WHERE id = ?";

// Inserts and deletes a row to test whether the database is writable. An UPDATE to the same value would not do: SQLite
// skips it.
inline constexpr QStringView tryToWrite = u"INSERT INTO claim (id, lease) VALUES (-1, 0)";
inline constexpr QStringView endTry = u"DELETE FROM claim WHERE id = -1";

// The oldest is the one that was stored first, whatever has happened to the clock since. Times written by a till whose
// clock was ahead sort last. Value: now.
inline constexpr QStringView status =
    u"SELECT SUM(waiting), SUM(blocked), (SELECT last_success FROM summary WHERE last_success IS NOT NULL "
    u"ORDER BY last_success <= ? DESC, last_success DESC LIMIT 1), (SELECT created FROM event ORDER BY id LIMIT 1) "
    u"FROM summary";
inline constexpr QStringView lastError =
    u"SELECT last_error, last_error_time FROM summary WHERE last_error IS NOT NULL "
    u"ORDER BY last_error_time <= ? DESC, last_error_time DESC LIMIT 1";

inline constexpr QStringView idsOfLease = u"SELECT id FROM claim WHERE lease = ?";
inline constexpr QStringView leases = u"SELECT DISTINCT lease FROM claim";

// An event that was being sent when its drain died has had an attempt: it may be why the drain died.
inline constexpr QStringView countAttempts =
    u"UPDATE event SET attempts = attempts + 1 WHERE id IN (SELECT id FROM claim WHERE lease = ?)";

inline constexpr QStringView releaseLease = u"DELETE FROM claim WHERE lease = ?";
inline constexpr QStringView release = u"DELETE FROM claim WHERE lease = ? AND id = ?";

// Unclaimed heads by next_attempt: asked for (-1), never tried (0), then due longest. %1: which; %2: locks the rows if
// several can write at a time. Values: lease, owner, those of %1, how many.
inline constexpr QStringView claim =
    u"INSERT INTO claim (lease, id) SELECT ?, e.id FROM head e WHERE e.owner = ? AND %1 "
    u"AND NOT EXISTS (SELECT 1 FROM claim c WHERE c.id = e.id) ORDER BY e.next_attempt, e.id LIMIT ? %2 "
    u"ON CONFLICT DO NOTHING";
inline constexpr QStringView due = u"e.next_attempt <= ?";
// Computed before the clock was set back. Value: now + longest back-off.
inline constexpr QStringView tooFar = u"e.next_attempt > ?";
// Somebody has asked for these. -1 comes before all others.
inline constexpr QStringView askedFor = u"e.next_attempt = -1";
inline constexpr QStringView pushedSince = u"e.next_attempt = 0 AND e.id > ?";

// %1: the text.
inline constexpr QStringView claimed =
    u"SELECT e.id, e.owner, e.basket, e.attempts, %1 FROM claim c JOIN head h ON h.id = c.id JOIN event e "
    u"ON e.id = c.id WHERE c.lease = ? ORDER BY h.next_attempt, h.id";

// All that the lease still claims was accepted: the next event of each order becomes its head. The lease is part of the
// condition so that a drain never touches what is not, or no longer, its own.
inline constexpr QStringView acceptedFollowers =
    u"INSERT INTO head (id, owner, next_attempt) SELECT n.id, n.owner, 0 FROM claim c JOIN event e ON e.id = c.id "
    u"JOIN event n ON n.id = (SELECT MIN(f.id) FROM event f WHERE f.owner = e.owner AND f.basket = e.basket "
    u"AND f.id > e.id) WHERE c.lease = ? AND n.state = 'waiting'";
inline constexpr QStringView acceptedHeads = u"DELETE FROM head WHERE id IN (SELECT id FROM claim WHERE lease = ?)";
inline constexpr QStringView accepted = u"DELETE FROM event WHERE id IN (SELECT id FROM claim WHERE lease = ?)";

inline constexpr QStringView failed = u"UPDATE event SET attempts = attempts + 1, last_error = ? "
                                      u"WHERE id IN (SELECT id FROM claim WHERE lease = ? AND id = ?)";
inline constexpr QStringView postpone = u"UPDATE head SET next_attempt = ? WHERE id = ?";

inline constexpr QStringView refused =
    u"UPDATE event SET attempts = attempts + 1, last_error = ?, state = 'dead', rejected = ? "
    u"WHERE id IN (SELECT id FROM claim WHERE lease = ? AND id = ?)";

// 1: due, but after those that were never tried.
inline constexpr QStringView endBackOffs = u"UPDATE head SET next_attempt = 1 WHERE owner = ? AND next_attempt > 1";

inline constexpr QStringView hasDeliverable = u"SELECT EXISTS (SELECT 1 FROM head WHERE owner = ?)";

inline constexpr QStringView newest = u"SELECT MAX(id) FROM event";

// One order: how many events, and how many of them have no dead letter before them. Values: owner, basket, twice.
inline constexpr QStringView measure =
    u"SELECT COUNT(*), COALESCE(SUM(CASE WHEN dead.first IS NULL OR e.id < dead.first THEN 1 ELSE 0 END), 0) "
    u"FROM event e, (SELECT MIN(id) AS first FROM event WHERE owner = ? AND basket = ? AND state = 'dead') AS dead "
    u"WHERE e.owner = ? AND e.basket = ?";
inline constexpr QStringView firstOfOrder =
    u"SELECT id, state FROM event WHERE owner = ? AND basket = ? ORDER BY id LIMIT 1";
inline constexpr QStringView removeHeads =
    u"DELETE FROM head WHERE id IN (SELECT id FROM event WHERE owner = ? AND basket = ? AND id >= ?)";
// Waits for a drain that is claiming the head. It has no lock of the order, and its claim is not visible yet.
inline constexpr QStringView lockHead =
    u"UPDATE head SET owner = owner WHERE id IN (SELECT id FROM event WHERE owner = ? AND basket = ?)";
inline constexpr QStringView removeHead = u"DELETE FROM head WHERE id = ?";
inline constexpr QStringView addHead = u"INSERT INTO head (id, owner, next_attempt) VALUES (?, ?, ?)";
inline constexpr QStringView nextAttempt = u"SELECT next_attempt FROM head WHERE id = ?";
inline constexpr QStringView isOrderBeingSent =
    u"SELECT EXISTS (SELECT 1 FROM claim c JOIN event e ON e.id = c.id WHERE e.owner = ? AND e.basket = ?)";

// For people; from the first id to the last.
inline constexpr QStringView entries =
    u"SELECT e.id, e.owner, e.basket, CASE WHEN c.id IS NULL THEN e.state ELSE 'sending' END, e.attempts, e.created, "
    u"h.next_attempt, e.last_error, e.rejected, NULL, NULL, e.event FROM event e LEFT JOIN claim c ON c.id = e.id "
    u"LEFT JOIN head h ON h.id = e.id WHERE e.id BETWEEN ? AND ? "
    u"UNION ALL SELECT id, owner, basket, 'discarded', attempts, created, 0, last_error, rejected, discarded, "
    u"discard_reason, event FROM discarded WHERE id BETWEEN ? AND ? ORDER BY 1";
// Values: owner, basket, twice.
inline constexpr QStringView eventsOfOrder =
    u"SELECT id, event FROM event WHERE owner = ? AND basket = ? "
    u"UNION ALL SELECT id, event FROM discarded WHERE owner = ? AND basket = ? ORDER BY 1";
inline constexpr QStringView order =
    u"SELECT owner, basket FROM event WHERE id = ? UNION ALL SELECT owner, basket FROM discarded WHERE id = ?";
inline constexpr QStringView deadLetters = u"SELECT id FROM event WHERE state = 'dead' ORDER BY id";

inline constexpr QStringView revive = u"UPDATE event SET state = 'waiting', attempts = 0, rejected = NULL "
                                      u"WHERE id = ? AND state = 'dead'";

inline constexpr QStringView discardCopy =
    u"INSERT INTO discarded SELECT id, owner, basket, attempts, created, last_error, rejected, ?, ?, event "
    u"FROM event WHERE id = ?";
inline constexpr QStringView discardEvent = u"DELETE FROM event WHERE id = ?";

inline constexpr QStringView restoreCopy =
    u"INSERT INTO event (id, owner, basket, state, attempts, created, last_error, rejected, event) "
    u"SELECT id, owner, basket, CASE WHEN rejected IS NULL THEN 'waiting' ELSE 'dead' END, attempts, created, "
    u"last_error, rejected, event FROM discarded WHERE id = ?";
inline constexpr QStringView restoreDelete = u"DELETE FROM discarded WHERE id = ?";

} // namespace queuesql
