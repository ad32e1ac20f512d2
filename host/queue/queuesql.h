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

inline constexpr QStringView leases = u"SELECT DISTINCT lease FROM claim";

// That these events were in hand when their drain died counts as an attempt: one of them may be the reason.
inline constexpr QStringView countAttempts =
    u"UPDATE event SET attempts = attempts + 1 WHERE id IN (SELECT id FROM claim WHERE lease = ?)";

inline constexpr QStringView releaseLease = u"DELETE FROM claim WHERE lease = ?";

// The events that can be taken, those that have been tried least first: the first one of its order, and nobody's claim.
// A next attempt further away than the longest back-off was computed before somebody put the clock back.
// %1: what is selected; %2: which events; %3: what locks the rows where several can write at a time. Values: owner,
// those of %2, now, now + longest back-off, how many.
inline constexpr QStringView due =
    u"SELECT %1 FROM event e WHERE e.state = 'waiting' AND e.owner = ? AND %2 "
    u"AND (e.next_attempt <= ? OR e.next_attempt > ?) AND NOT EXISTS (SELECT 1 FROM claim c WHERE c.id = e.id) "
    u"AND NOT EXISTS (SELECT 1 FROM event p WHERE p.owner = e.owner AND p.basket = e.basket AND p.id < e.id "
    u"AND p.state <> 'discarded') "
    u"ORDER BY e.attempts, e.id LIMIT ? %3";

inline constexpr QStringView firstOfRun = u"e.id > ?";

// Only so far behind the first one: in a long order no other event can be taken, and all would be looked at for each.
// Values: attempts, the first id, the last id.
inline constexpr QStringView run = u"e.attempts = ? AND e.id BETWEEN ? AND ?";

// %1: what is due. Values: lease, those of %1.
inline constexpr QStringView claim = u"INSERT INTO claim (lease, id) %1 ON CONFLICT DO NOTHING";

// %1: the text.
inline constexpr QStringView claimed =
    u"SELECT e.id, e.basket, e.attempts, %1 FROM claim c JOIN event e ON e.id = c.id WHERE c.lease = ? ORDER BY c.id";

// The lease is asked for so that a drain never touches what is not, or no longer, its own.
inline constexpr QStringView accepted =
    u"DELETE FROM event WHERE id IN (SELECT id FROM claim WHERE lease = ? AND id <= ?)";

inline constexpr QStringView failed = u"UPDATE event SET attempts = attempts + 1, last_error = ?, next_attempt = ? "
                                      u"WHERE id IN (SELECT id FROM claim WHERE lease = ? AND id = ?)";

inline constexpr QStringView refused =
    u"UPDATE event SET attempts = attempts + 1, last_error = ?, state = 'aside', rejected = ? "
    u"WHERE id IN (SELECT id FROM claim WHERE lease = ? AND id = ?)";

inline constexpr QStringView endBackOffs =
    u"UPDATE event SET next_attempt = 0 WHERE state = 'waiting' AND owner = ? AND next_attempt > 0";

inline constexpr QStringView hasDeliverable =
    u"SELECT EXISTS (SELECT 1 FROM event e WHERE e.state = 'waiting' AND e.owner = ? "
    u"AND NOT EXISTS (SELECT 1 FROM event p WHERE p.owner = e.owner AND p.basket = e.basket AND p.id < e.id "
    u"AND p.state = 'aside'))";

// For people; from the first id to the last.
inline constexpr QStringView entries =
    u"SELECT id, owner, basket, CASE WHEN id IN (SELECT id FROM claim) THEN 'sending' ELSE state END, attempts, "
    u"created, next_attempt, last_error, rejected, discarded, discard_reason, event FROM event WHERE id BETWEEN ? AND "
    u"? ORDER BY id";

inline constexpr QStringView retry =
    u"UPDATE event SET state = 'waiting', attempts = 0, next_attempt = 0, rejected = NULL "
    u"WHERE state = 'aside' AND id BETWEEN ? AND ?";

inline constexpr QStringView discard = u"UPDATE event SET state = 'discarded', discarded = ?, discard_reason = ? "
                                       u"WHERE id = ? AND state IN ('waiting', 'aside') "
                                       u"AND id NOT IN (SELECT id FROM claim)";

inline constexpr QStringView newest = u"SELECT MAX(id) FROM event";

} // namespace queuesql
