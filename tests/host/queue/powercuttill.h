// A till with the real queue, on a disk that loses its power again and again.
#pragma once

#include "powercutdisk.h"
#include "powercutledger.h"

#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <support/fakeconfig.h>

#include <QtCore/QTemporaryDir>

/// One queue from its first start on; what a power cut leaves is what the next start finds. One at a time.
class PowerCutTill
{
public:
    /// How the durability that the queue relies on is undermined, to see that the loss is noticed.
    enum class Sabotage {
        None,
        SyncsIgnored,      ///< The disk says that it has synced and has not.
        SynchronousNormal, ///< Pushes are committed without a sync.
    };

    PowerCutTill(std::uint64_t seed, Sabotage sabotage, PowerCutCounts &counts);
    ~PowerCutTill() { m_counts.torn += m_disk.torn(); }
    Q_DISABLE_COPY_MOVE(PowerCutTill)

    /// Works until the power fails at a random moment, then judges what is left. False: the database is beyond use.
    bool liveUntilPowerCut();

private:
    void work();
    void open();
    void act();
    void push();
    void deliver();
    void receive(const QJsonObject &event);
    void rest();
    void close();
    bool judgeRemains();
    void attempt(const std::function<void()> &action);
    bool isRunning() const { return m_disk.isOn() && !m_isBroken; }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

    std::mt19937_64 m_random;
    Sabotage m_sabotage;
    PowerCutCounts &m_counts;
    PowerCutDisk m_disk;
    PowerCutLedger m_ledger;
    QTemporaryDir m_folder;
    QString m_database = m_folder.filePath(QStringLiteral("queue.db"));
    FakeConfig m_config{{{QStringLiteral("Queue:database"), m_database}}};
    QueueTime m_now{std::chrono::hours(1)};
    bool m_isTidy; // rests, and restarts in order; where not, only SQLite's own limit keeps the log short
    bool m_isBroken = false;
    bool m_isResting = false;
    std::optional<DBQueueBroker> m_broker; // both sides of the queue, as a till has them
    std::optional<QueueDelivery> m_delivery;
    QList<QJsonObject> m_delivered; // by the step in hand
};
