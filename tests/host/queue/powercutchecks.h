// A till's checks and journal, on a disk that loses its power again and again.
#pragma once

#include "powercutdisk.h"
#include "powercuttill.h"

#include <checks/checkstore.h>

#include <QtCore/QTemporaryDir>

/// Counted over all power cuts.
struct PowerCutCheckCounts
{
    int cuts = 0;
    int torn = 0;     ///< Blocks that were written in part.
    int saved = 0;    ///< Steps that have returned: saves, endings, parkings.
    int finished = 0; ///< Of these, endings.
    int inHand = 0;   ///< Cuts that left the step in progress done.

    // Nothing of these may be above 0.
    int lost = 0;       ///< Cuts that left an earlier state than the last step that had returned.
    int halved = 0;     ///< Cuts that left a state that never was.
    int corrupt = 0;    ///< Databases that could not be read, or were not sound.
    int unexpected = 0; ///< Failures while the power was on.

    bool areGood() const { return lost + halved + corrupt + unexpected == 0; }
};

/// One store from its first start on; what a power cut leaves is what the next start finds. One at a time.
class PowerCutChecks
{
public:
    PowerCutChecks(std::uint64_t seed, PowerCutTill::Sabotage sabotage, PowerCutCheckCounts &counts);
    ~PowerCutChecks() { m_counts.torn += m_disk.torn(); }
    Q_DISABLE_COPY_MOVE(PowerCutChecks)

    /// Works until the power fails at a random moment, then judges what is left. False: the database is beyond use.
    bool liveUntilPowerCut();

private:
    /// The open check, the others and the journal, as text.
    using State = QByteArray;

    void work();
    void open();
    void act();
    void change();
    void finish();
    void park();
    void step(const std::function<void()> &operation);
    bool judgeRemains();
    State expected() const;
    static State stateIn(CheckStore &store);
    void attempt(const std::function<void()> &action);
    bool isRunning() const { return m_disk.isOn() && !m_isBroken; }
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }

    std::mt19937_64 m_random;
    PowerCutTill::Sabotage m_sabotage;
    PowerCutCheckCounts &m_counts;
    PowerCutDisk m_disk;
    QTemporaryDir m_folder;
    bool m_isBroken = false;
    std::optional<CheckStore> m_store;
    QSharedPointer<SaleDocument> m_check;
    QByteArrayList m_parked;  // identifiers
    QByteArrayList m_journal; // identifiers
    QList<State> m_states;    // all that were acknowledged
    State m_inHand;
};
