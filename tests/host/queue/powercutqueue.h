// The queue of a till that loses its power: pushes, deliveries and restarts at random. The rules: nothing lost, nothing
// overtaken, nothing invented, nothing sent again without need.
#pragma once

#include "powercutwork.h"

#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <support/fakeconfig.h>

#include <optional>
#include <set>

class PowerCutQueue : public PowerCutWork
{
public:
    struct Entry
    {
        int order = 0;
        bool pushed = false; // the push has returned
        bool gone = false;   // was not there after a power cut, and so never will be
        bool delivered = false;
        bool deleted = false;
        bool deletedForGood = false;
    };
    using Ledger = std::vector<Entry>; // the index is the event's number

    PowerCutQueue(const QString &folder, std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally)
        : PowerCutWork(seed, sabotage, tally),
          m_config({{u"Host:dataFolder"_s, folder}}),
          m_settings(QueueSettings::configured()),
          m_isTidy(chance(0.7))
    {
        m_tally.seen.insert({{"events pushed", 0}, {"delivered", 0}, {"delivered again", 0}});
    }

    void open()
    {
        m_lastSent.clear();
        m_broker.emplace();
        m_delivery.emplace(
            m_settings, QHash<QString, QueueHandler>{{u"kvo"_s, [this](const QJsonObject &event) { receive(event); }}},
            QueueDelivery::Environment{
                [this] { return m_now; }, [this] { return std::generate_canonical<double, 32>(m_random); }, {}});
        if (m_sabotage == Sabotage::None && chance(0.5))
            m_delivery->hasDeliverable(); // is the first to open the database
        m_broker->status();
        sabotageCommits();
    }

    void act()
    {
        m_now += std::chrono::minutes(2); // longer than any back-off
        const int action = upTo(19);
        if (action < 9)
            push();
        else if (action < 18 || !m_isTidy)
            deliver();
        else
            rest();
    }

    void close()
    {
        m_delivery.reset();
        m_broker.reset();
        synced();
    }

    /// The drain's checkpoints run beside the check thread's pushes.
    void afterDatabaseWrite()
    {
        const bool isResting = std::exchange(m_isResting, false); // the push may write to the database itself
        if (isResting && chance(0.2))
            push();
        m_isResting = isResting;
    }

    const Ledger &ledger() const { return m_ledger; }
    void goBack() { m_ledger = m_judged; }

    void judge(const QString &folder, const Ledger &ledger)
    {
        m_judged = ledger;
        std::set<int> left;
        std::map<int, int> lastSent;
        const auto note = [&](const QJsonObject &event) {
            const int number = find(event, ledger);
            if (number < 0)
                return;
            m_tally.broken["there twice"] += left.insert(number).second ? 0 : 1;
            checkSequence(number, lastSent);
        };
        QueueSettings settings = m_settings;
        settings.database = folder + u"/queue.db"_s;
        requireSound(settings.database);
        QueueDelivery delivery(settings, {{u"kvo"_s, note}});
        while (delivery.step())
            ;
        for (int number = 0; number < std::ssize(m_judged); ++number) {
            Entry &entry = m_judged[number];
            const bool isLeft = left.contains(number);
            m_tally.broken["there after a durable deletion"] += isLeft && entry.deletedForGood ? 1 : 0;
            m_tally.broken["lost"] += !isLeft && entry.pushed && !entry.gone && !entry.delivered ? 1 : 0;
            entry.pushed = isLeft;
            entry.gone = !isLeft;
            entry.deleted = false;
        }
    }

private:
    // Of very different length, so that events share pages, fill them, and spill over.
    static QJsonObject eventOf(int number, int order)
    {
        const int length = number * 7919 % 2000 * (number % 16 == 0 ? 8 : 1);
        return {{u"number"_s, number},
                {u"payload"_s, QJsonObject{{u"basket"_s, QString::number(order)},
                                           {u"text"_s, QString(length, QChar(u'a' + number % 26))}}}};
    }

    /// The event's number; -1, which is counted, when nobody has pushed it or it was gone.
    int find(const QJsonObject &event, const Ledger &ledger)
    {
        const int number = event.value(u"number").toInt(-1);
        if (number >= 0 && number < std::ssize(ledger) && !ledger[number].gone &&
            event == eventOf(number, ledger[number].order))
            return number;
        ++m_tally.broken["unknown"];
        return -1;
    }

    void checkSequence(int number, std::map<int, int> &lastOfOrder)
    {
        const int last = std::exchange(lastOfOrder[m_ledger[number].order], number);
        m_tally.broken["overtaken"] += number < last ? 1 : 0;
    }

    void push()
    {
        const int number = static_cast<int>(m_ledger.size());
        const int order = upTo(5);
        m_ledger.push_back({.order = order});
        m_broker->push(u"kvo"_s, eventOf(number, order), {});
        m_ledger[number].pushed = true;
        ++m_tally.seen["events pushed"];
        synced(); // with the log that both sides share
    }

    void deliver()
    {
        m_delivered.clear();
        m_delivery->step();
        for (const int number : m_delivered)
            m_ledger[number].deleted = true;
    }

    void receive(const QJsonObject &event)
    {
        const int number = find(event, m_ledger);
        if (number < 0)
            return;
        m_tally.broken["sent after their deletion"] += m_ledger[number].deleted ? 1 : 0;
        checkSequence(number, m_lastSent);
        if (chance(0.1))
            push(); // the next sale, while the exchange lasts
        if (chance(0.1))
            throw std::runtime_error("no answer");
        ++m_tally.seen[std::exchange(m_ledger[number].delivered, true) ? "delivered again" : "delivered"];
        m_delivered.push_back(number);
    }

    void rest()
    {
        m_isResting = true;
        m_delivery->checkpointWhenIdle();
        m_isResting = false;
        synced();
    }

    /// All deletions up to now are durable.
    void synced()
    {
        for (Entry &entry : m_ledger)
            entry.deletedForGood |= entry.deleted;
    }

    FakeConfig m_config;
    QueueSettings m_settings;
    QueueTime m_now{std::chrono::hours(1)};
    bool m_isTidy; // rests, and restarts in order; where not, only SQLite's own limit keeps the log short
    bool m_isResting = false;
    std::optional<DBQueueBroker> m_broker;
    std::optional<QueueDelivery> m_delivery;
    Ledger m_ledger;
    Ledger m_judged;               // what the ledger would be after the last cut
    std::vector<int> m_delivered;  // by the current step
    std::map<int, int> m_lastSent; // the event's number by order, since the last cut
};
