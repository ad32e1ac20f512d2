// All SQL of the queue's operations, for both kinds of database; their layouts are in sqliteschema.cpp and
// postgresschema.cpp.
#pragma once

#include <QtCore/QStringView>

namespace queuesql {

inline constexpr QStringView push =
    u"INSERT INTO event (owner, basket, event, created, state) VALUES (?, ?, ?, ?, 'waiting')";

inline constexpr QStringView status =
    u"SELECT COUNT(*), MIN(created), COALESCE(SUM(CASE WHEN e.state = 'aside' OR EXISTS (SELECT 1 FROM event p "
    u"WHERE p.owner = e.owner AND p.basket = e.basket AND p.id < e.id AND p.state = 'aside') THEN 1 ELSE 0 END), 0) "
    u"FROM event e WHERE e.state <> 'discarded'";

inline constexpr QStringView leases = u"SELECT DISTINCT lease FROM event WHERE state = 'sending'";

inline constexpr QStringView releaseLease =
    u"UPDATE event SET state = 'waiting', lease = NULL WHERE state = 'sending' AND lease = ?";

// A next attempt further away than the longest back-off was computed before somebody put the clock back.
// Only the first event of its order can be taken. %1: which events, firstOfRun or restOfRun; %2: what locks the rows
// where several can write at a time; %3: the text. Values: owner, after, those of %1, now, now + longest back-off, how
// many, lease.
inline constexpr QStringView claim =
    u"WITH run AS MATERIALIZED (SELECT e.id FROM event e WHERE e.state = 'waiting' AND e.owner = ? AND e.id > ? %1"
    u"AND (e.next_attempt <= ? OR e.next_attempt > ?) "
    u"AND NOT EXISTS (SELECT 1 FROM event p WHERE p.owner = e.owner AND p.basket = e.basket AND p.id < e.id "
    u"AND p.state <> 'discarded') "
    u"ORDER BY e.attempts, e.id LIMIT ? %2) "
    u"UPDATE event SET state = 'sending', lease = ?, attempts = attempts + 1 WHERE id IN (SELECT id FROM run) "
    u"RETURNING id, basket, attempts, %3";

inline constexpr QStringView firstOfRun = u"";

// Only so far behind the first one: in a long order no other event can be taken, and all would be looked at for each.
// Values: attempts, the last id.
inline constexpr QStringView restOfRun = u"AND e.attempts = ? AND e.id <= ? ";

// The lease is asked for so that a drain never touches what is not, or no longer, its own. %1: a place for each id.
inline constexpr QStringView accepted = u"DELETE FROM event WHERE lease = ? AND id IN (%1)";

inline constexpr QStringView failed =
    u"UPDATE event SET state = 'waiting', lease = NULL, last_error = ?, next_attempt = ? WHERE id = ? AND lease = ?";

inline constexpr QStringView refused =
    u"UPDATE event SET state = 'aside', lease = NULL, last_error = ?, rejected = ? WHERE id = ? AND lease = ?";

// As if it had never been taken.
inline constexpr QStringView unsent =
    u"UPDATE event SET state = 'waiting', lease = NULL, attempts = attempts - 1 WHERE lease = ? AND id IN (%1)";

inline constexpr QStringView endBackOffs =
    u"UPDATE event SET next_attempt = 0 WHERE state = 'waiting' AND owner = ? AND next_attempt > 0";

inline constexpr QStringView hasDeliverable =
    u"SELECT EXISTS (SELECT 1 FROM event e WHERE e.state IN ('waiting', 'sending') AND e.owner = ? "
    u"AND NOT EXISTS (SELECT 1 FROM event p WHERE p.owner = e.owner AND p.basket = e.basket AND p.id < e.id "
    u"AND p.state = 'aside'))";

// For people; from the first id to the last.
inline constexpr QStringView entries =
    u"SELECT id, owner, basket, state, attempts, created, next_attempt, last_error, rejected, discarded, "
    u"discard_reason, event FROM event WHERE id BETWEEN ? AND ? ORDER BY id";

inline constexpr QStringView retry =
    u"UPDATE event SET state = 'waiting', attempts = 0, next_attempt = 0, rejected = NULL "
    u"WHERE state = 'aside' AND id BETWEEN ? AND ?";

inline constexpr QStringView discard = u"UPDATE event SET state = 'discarded', discarded = ?, discard_reason = ? "
                                       u"WHERE id = ? AND state IN ('waiting', 'aside')";

inline constexpr QStringView newest = u"SELECT MAX(id) FROM event";

} // namespace queuesql
