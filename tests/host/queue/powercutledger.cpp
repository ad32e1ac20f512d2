// The rules: nothing lost, nothing overtaken, nothing invented, nothing again without need.
#include "powercutledger.h"

#include <set>

using namespace Qt::Literals::StringLiterals;

// Of very different length, so that events share pages, fill them, and spill over.
QJsonObject PowerCutLedger::eventOf(const Entry &entry)
{
    const int length = entry.number * 7919 % 2000 * (entry.number % 16 == 0 ? 8 : 1);
    return {{u"number"_s, entry.number},
            {u"payload"_s, QJsonObject{{u"basket"_s, QString::number(entry.order)},
                                       {u"text"_s, QString(length, QChar(u'a' + entry.number % 26))}}}};
}

QJsonObject PowerCutLedger::newEvent(int order)
{
    m_entries.push_back({static_cast<int>(m_entries.size()), order});
    return eventOf(m_entries.back());
}

// One that nobody pushed is counted, and has no meaning further on.
PowerCutLedger::Entry &PowerCutLedger::find(const QJsonObject &event)
{
    const int number = event.value(u"number").toInt(-1);
    if (number >= 0 && number < std::ssize(m_entries) && event == eventOf(m_entries[number]) &&
        m_entries[number].state != State::Gone)
        return m_entries[number];
    ++m_counts.unknown;
    return m_unknown = {};
}

void PowerCutLedger::pushed(const QJsonObject &event)
{
    find(event).state = State::Stored;
    ++m_counts.pushed;
}

void PowerCutLedger::arrived(const QJsonObject &event)
{
    const Entry &entry = find(event);
    m_counts.undeleted += entry.deleted ? 1 : 0;
    checkSequence(entry);
}

void PowerCutLedger::checkSequence(const Entry &entry)
{
    int &last = m_lastSent[entry.order];
    m_counts.overtaken += entry.number < last ? 1 : 0;
    last = entry.number;
}

void PowerCutLedger::delivered(const QJsonObject &event)
{
    Entry &entry = find(event);
    ++m_counts.delivered;
    m_counts.again += entry.delivered ? 1 : 0;
    entry.delivered = true;
}

void PowerCutLedger::deleted(const QJsonObject &event)
{
    find(event).deleted = true;
}

void PowerCutLedger::synced()
{
    for (Entry &entry : m_entries)
        entry.deletedForGood |= entry.deleted;
}

void PowerCutLedger::afterCut(const QList<QJsonObject> &left)
{
    std::set<int> numbers;
    m_lastSent.clear();
    for (const QJsonObject &event : left) {
        const Entry &entry = find(event);
        m_counts.unknown += numbers.insert(entry.number).second ? 0 : 1;
        checkSequence(entry);
    }
    m_lastSent.clear();
    for (Entry &entry : m_entries) {
        const bool isLeft = numbers.contains(entry.number);
        m_counts.undeleted += isLeft && entry.deletedForGood ? 1 : 0;
        m_counts.lost += !isLeft && entry.state == State::Stored && !entry.delivered ? 1 : 0;
        entry.state = isLeft ? State::Stored : State::Gone;
        entry.deleted = false;
    }
}
