// The queue of a till that loses its power: both its sides, and a ledger kept where no power cut reaches it.
#pragma once

#include "powercutwork.h"

#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <support/fakeconfig.h>

#include <QtCore/QJsonObject>

#include <optional>

class PowerCutQueue : public PowerCutWork
{
public:
    PowerCutQueue(const QString &folder, std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally);

    void open() override;
    void act() override;
    void close() override;
    Judgement judgement() override;
    void goBack() override { m_ledger = m_judged; }

    /// Called after each write to the database itself: the drain's checkpoints run beside the check thread's pushes.
    void afterDatabaseWrite();

private:
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

    static QJsonObject eventOf(int number, int order);
    bool judge(const QString &folder, const Ledger &ledger);
    int find(const QJsonObject &event, const Ledger &ledger);
    void checkSequence(int number, std::map<int, int> &lastOfOrder);
    void push();
    void deliver();
    void rest();
    void receive(const QJsonObject &event);
    void synced();

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
