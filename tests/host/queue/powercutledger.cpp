// The rules: nothing lost, nothing overtaken, nothing invented, nothing again without need.
#include "powercutledger.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

// Of very different length, so that events share pages, fill them, and spill over.
QJsonObject PowerCutLedger::event(std::size_t number) const
{
    const int length = static_cast<int>(number * 7919 % 2000) * (number % 16 == 0 ? 8 : 1);
    return {{u"number"_s, static_cast<int>(number)},
            {u"payload"_s, QJsonObject{{u"basket"_s, QString::number(m_entries[number].order)},
                                       {u"text"_s, QString(length, QChar(u'a' + number % 26))}}}};
}

QJsonObject PowerCutLedger::newEvent(int order)
{
    m_entries.push_back({order});
    return event(m_entries.size() - 1);
}

// Null, and counted, when it is not exactly what was pushed.
PowerCutLedger::Entry *PowerCutLedger::find(const QJsonObject &event)
{
    const int number = event.value(u"number").toInt(-1);
    if (number >= 0 && number < static_cast<int>(m_entries.size()) && event == this->event(number) &&
        m_entries[number].state != State::Gone)
        return &m_entries[number];
    ++m_counts.unknown;
    return nullptr;
}

void PowerCutLedger::pushed(const QJsonObject &event)
{
    find(event)->state = State::Stored;
    ++m_counts.pushed;
}

void PowerCutLedger::arrived(const QJsonObject &event)
{
    const Entry *const entry = find(event);
    if (entry == nullptr)
        return;
    m_counts.undeleted += entry->deleted ? 1 : 0;
    const Entry *&last = m_lastSent[entry->order];
    m_counts.overtaken += isBehindAnUndelivered(*entry) || entry < last ? 1 : 0;
    last = entry;
}

bool PowerCutLedger::isBehindAnUndelivered(const Entry &entry) const
{
    return std::any_of(m_entries.data(), &entry, [&entry](const Entry &earlier) {
        return earlier.order == entry.order && earlier.state != State::Gone && !earlier.delivered;
    });
}

void PowerCutLedger::delivered(const QJsonObject &event)
{
    Entry *const entry = find(event);
    if (entry == nullptr)
        return;
    ++m_counts.delivered;
    m_counts.again += entry->delivered ? 1 : 0;
    entry->delivered = true;
}

void PowerCutLedger::deleted(const QJsonObject &event)
{
    if (Entry *const entry = find(event))
        entry->deleted = true;
}

void PowerCutLedger::synced()
{
    for (Entry &entry : m_entries)
        entry.deletedForGood |= entry.deleted;
}

void PowerCutLedger::afterCut(const QList<QJsonObject> &left)
{
    std::vector<bool> isLeft(m_entries.size());
    m_lastSent.clear();
    for (const QJsonObject &event : left) {
        const Entry *const entry = find(event);
        if (entry == nullptr)
            continue;
        auto mark = isLeft[entry - m_entries.data()];
        m_counts.unknown += mark ? 1 : 0;
        mark = true;
        const Entry *&last = m_lastSent[entry->order];
        m_counts.overtaken += entry < last ? 1 : 0;
        last = entry;
    }
    m_lastSent.clear();
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        Entry &entry = m_entries[i];
        m_counts.undeleted += isLeft[i] && entry.deletedForGood ? 1 : 0;
        m_counts.lost += !isLeft[i] && entry.state == State::Stored && !entry.delivered ? 1 : 0;
        entry.state = isLeft[i] ? State::Stored : State::Gone;
        entry.deleted = false;
    }
}
