// The checks and the journal of a till that loses its power. A check is changed and saved, closed or parked at random.
// What a cut leaves is the last state that was acknowledged, or what the step in progress was to make of it.
#pragma once

#include "powercutwork.h"

#include <checks/checkstore.h>

#include <support/checkbuilder.h>

#include <optional>

class PowerCutChecks : public PowerCutWork
{
public:
    /// All that is stored.
    struct State
    {
        QByteArray open;
        QStringList parked;  // identifiers
        QStringList journal; // identifiers
        friend bool operator==(const State &, const State &) = default;
    };
    struct Ledger
    {
        State inHand;                 // what the current step makes of the last state
        QList<State> states{State()}; // all that were acknowledged
    };

    PowerCutChecks(const QString &folder, std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally)
        : PowerCutWork(seed, sabotage, tally), m_folder(folder)
    {
        m_tally.seen.insert({{"steps acknowledged", 0}, {"step in progress done", 0}, {"not done", 0}, {"endings", 0}});
    }

    void open()
    {
        m_store.emplace(m_folder);
        m_check = m_store->restore();
        sabotageCommits();
    }

    void act()
    {
        const int action = m_check ? upTo(19) : 2;
        if (action == 0)
            end(&State::parked, [this] { m_store->park(u"Отложен"_s); });
        else if (action == 1)
            end(&State::journal, [this] { m_store->finish(*m_check, {{u"check"_s, m_check->getIdentifier()}}); });
        else
            change();
    }

    void close() { m_store.reset(); }
    void afterDatabaseWrite() {}
    const Ledger &ledger() const { return m_ledger; }

    void judge(const QString &folder, const Ledger &ledger)
    {
        CheckStore store(folder);
        requireSound(store.fileName());
        m_judged = stateIn(store);
        const State &last = ledger.states.last();
        if (ledger.inHand != last && (m_judged == ledger.inHand || m_judged == last))
            ++m_tally.seen[m_judged == last ? "not done" : "step in progress done"];
        else if (m_judged != last)
            ++m_tally.broken[ledger.states.contains(m_judged) ? "lost" : "halved"];
        if (!store.takeNotices().isEmpty())
            throw std::runtime_error("put aside");
    }

    void goBack()
    {
        m_ledger.inHand = m_judged;
        m_ledger.states.append(m_judged);
    }

private:
    void change()
    {
        if (!m_check)
            m_check = QSharedPointer<SaleDocument>::create();
        for (int changes = upTo(2); changes >= 0; --changes) {
            const auto goods = m_check->getGoodsItems();
            const auto item = goods.isEmpty() ? builder::line(100) : goods.at(upTo(static_cast<int>(goods.size()) - 1));
            const int change = goods.isEmpty() ? 0 : upTo(5);
            if (change == 0)
                m_check->addGoodsItem(builder::line(1000 + upTo(1000)));
            else if (change == 1)
                m_check->addCard(builder::card(QString(upTo(3000), u'7')));
            else if (change == 2)
                m_check->setPluginData(u"kvo"_s, QString::number(upTo(3)), QString(upTo(upTo(9) ? 300 : 20'000), u'x'));
            else if (change == 3)
                item->getTmc()->setName(QString(upTo(500), u'n'));
            else if (change == 4)
                m_check->removeGoodsItem(item->getPosnum());
            else if (item->getTotal() > Money::fromKopecks(10))
                m_check->addImpact(builder::shares({{item->getPosnum(), 0.1}}));
        }
        m_ledger.inHand.open = builder::text(*m_check);
        step([this] { m_store->save(*m_check); });
    }

    void end(QStringList State::*list, const std::function<void()> &operation)
    {
        m_ledger.inHand.open.clear();
        (m_ledger.inHand.*list).append(m_check->getIdentifier());
        step(operation);
        m_check.reset();
        ++m_tally.seen["endings"];
    }

    void step(const std::function<void()> &operation)
    {
        operation();
        m_ledger.states.append(m_ledger.inHand);
        ++m_tally.seen["steps acknowledged"];
    }

    static State stateIn(CheckStore &store)
    {
        State state;
        if (const auto check = store.restore())
            state.open = builder::text(*check);
        for (const auto checks = store.checks(); const auto &check : checks)
            if (check.standing != CheckStore::Standing::Current)
                state.parked.append(check.identifier);
        for (const auto entries = store.journal(); const auto &entry : entries)
            state.journal.append(entry.entry.value(u"check"_s).toString());
        return state;
    }

    QString m_folder;
    std::optional<CheckStore> m_store;
    QSharedPointer<SaleDocument> m_check;
    Ledger m_ledger;
    State m_judged;
};
