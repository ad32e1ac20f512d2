// The checks and the journal of a till that loses its power.
#pragma once

#include "powercutwork.h"

#include <checks/checkstore.h>

#include <optional>

class PowerCutChecks : public PowerCutWork
{
public:
    PowerCutChecks(const QString &folder, std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally);

    void open() override;
    void act() override;
    void close() override { m_store.reset(); }
    Judgement judgement() override;
    void goBack() override;
    void afterDatabaseWrite() {}

private:
    /// All that is stored.
    struct State
    {
        QByteArray open;
        QByteArrayList parked;  // identifiers
        QByteArrayList journal; // identifiers
        friend bool operator==(const State &, const State &) = default;
    };

    bool judge(const QString &folder, const State &inHand, const QList<State> &states);
    void change();
    void end(QByteArrayList State::*list, const std::function<void(const SaleDocument &)> &operation);
    void step(const std::function<void()> &operation);
    static State stateIn(CheckStore &store);

    QString m_folder;
    std::optional<CheckStore> m_store;
    QSharedPointer<SaleDocument> m_check;
    State m_inHand;        // what the current step makes of the last state
    QList<State> m_states; // all that were acknowledged
    State m_judged;
};
