// A check is changed and saved, closed or parked at random. What a cut leaves is the last state that was acknowledged,
// or what the step in progress was to make of it.
#include "powercutchecks.h"

#include <support/checkbuilder.h>

using namespace Qt::Literals::StringLiterals;

PowerCutChecks::PowerCutChecks(const QString &folder, std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally)
    : PowerCutWork(seed, sabotage, tally), m_folder(folder), m_states({State()})
{
    m_tally.seen.insert({{"steps acknowledged", 0}, {"step in progress done", 0}, {"not done", 0}, {"endings", 0}});
}

void PowerCutChecks::open()
{
    m_store.emplace(m_folder);
    m_check = m_store->restore();
    sabotageCommits();
}

void PowerCutChecks::act()
{
    const int action = m_check ? upTo(19) : 2;
    if (action == 0)
        end(&State::parked, [this](const SaleDocument &) { m_store->park(u"Отложен"_s); });
    else if (action == 1)
        end(&State::journal, [this](const SaleDocument &check) {
            m_store->finish(check, {{u"check"_s, check.getIdentifier()}});
        });
    else
        change();
}

void PowerCutChecks::change()
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
    m_inHand.open = builder::text(*m_check);
    step([this] { m_store->save(*m_check); });
}

void PowerCutChecks::end(QByteArrayList State::*list, const std::function<void(const SaleDocument &)> &operation)
{
    const auto check = std::exchange(m_check, nullptr);
    m_inHand.open.clear();
    (m_inHand.*list).append(check->getIdentifier().toUtf8());
    step([&] { operation(*check); });
    ++m_tally.seen["endings"];
}

void PowerCutChecks::step(const std::function<void()> &operation)
{
    operation();
    m_states.append(m_inHand);
    ++m_tally.seen["steps acknowledged"];
}

PowerCutChecks::State PowerCutChecks::stateIn(CheckStore &store)
{
    State state;
    if (const auto check = store.restore())
        state.open = builder::text(*check);
    for (const auto checks = store.checks(); const auto &check : checks) {
        if (check.standing != CheckStore::Standing::Current)
            state.parked.append(check.identifier.toUtf8());
    }
    for (const auto entries = store.journal(); const auto &entry : entries)
        state.journal.append(entry.entry.value(u"check"_s).toString().toUtf8());
    return state;
}

PowerCutWork::Judgement PowerCutChecks::judgement()
{
    return
        [this, inHand = m_inHand, states = m_states](const QString &folder) { return judge(folder, inHand, states); };
}

bool PowerCutChecks::judge(const QString &folder, const State &inHand, const QList<State> &states)
{
    CheckStore store(folder);
    if (!isSound(store.fileName()))
        return false;
    m_judged = stateIn(store);
    if (inHand != states.last() && (m_judged == inHand || m_judged == states.last()))
        ++m_tally.seen[m_judged == inHand ? "step in progress done" : "not done"];
    else if (m_judged != states.last())
        ++m_tally.broken[states.contains(m_judged) ? "lost" : "halved"];
    return store.takeNotices().isEmpty();
}

void PowerCutChecks::goBack()
{
    m_inHand = m_judged;
    m_states.append(m_judged);
}
