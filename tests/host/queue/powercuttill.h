// A till with the real queue, on a disk that loses its power again and again.
#pragma once

#include "powercutdisk.h"
#include "powercutledger.h"

#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <support/fakeconfig.h>

#include <QtCore/QTemporaryDir>

#include <array>

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

    /// What the queue was at when the power failed.
    enum Phase { Opening, Pushing, Replaying, Deleting, Checkpointing, Closing, phaseCount };

    struct Report : PowerCutLedger::Counts
    {
        int cuts = 0;
        std::array<int, phaseCount> cutsByPhase{};
        int dropped = 0; ///< Blocks that were not written.
        int torn = 0;    ///< Blocks that were written in part.
    };

    PowerCutTill(std::uint64_t seed, Sabotage sabotage, Report &report);
    ~PowerCutTill();
    Q_DISABLE_COPY_MOVE(PowerCutTill)

    /// Works until the power fails at a random moment, then judges what is left. False: the database is beyond use.
    bool liveUntilPowerCut();

private:
    struct Queue;

    void work();
    void open();
    void act();
    void push();
    void deliver();
    void receive(const QJsonObject &event);
    void rest();
    void close();
    bool judgeRemains();
    template <class Action>
    void attempt(Phase phase, Action action);
    void enter(Phase phase);
    bool isRunning() const { return m_disk.isOn() && !m_isBroken; }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

    std::mt19937_64 m_random;
    Sabotage m_sabotage;
    Report &m_report;
    PowerCutDisk m_disk;
    PowerCutLedger m_ledger;
    QTemporaryDir m_folder;
    QString m_database = m_folder.filePath(QStringLiteral("queue.db"));
    FakeConfig m_config{{{QStringLiteral("Queue:database"), m_database}}};
    QueueTime m_now{std::chrono::hours(1)};
    bool m_isTidy; // rests, and restarts in order; where not, only SQLite's own limit keeps the log short
    bool m_isBroken = false;
    Phase m_phase = Opening;
    std::unique_ptr<Queue> m_queue;
    QList<QJsonObject> m_delivered; // by the step in hand
};
