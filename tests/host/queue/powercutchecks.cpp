// The till's life: a check is changed and saved, closed or parked, until the power fails.
#include "powercutchecks.h"

#include "powercutfiles.h"
#include "powercutvfs.h"

#include <core/basicexception.h>

#include <support/checkbuilder.h>

#include <QtCore/QScopeGuard>

#include <iostream>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int longestLife = 200; // file operations: some thirty steps
using Sabotage = PowerCutTill::Sabotage;

QByteArray stateOf(const SaleDocument *open, const QByteArrayList &parked, const QByteArrayList &journal)
{
    return (open ? builder::text(*open) : "nothing open") + "\nparked " + parked.join(' ') + "\njournal " +
           journal.join(' ');
}

} // namespace

PowerCutChecks::PowerCutChecks(std::uint64_t seed, Sabotage sabotage, PowerCutCheckCounts &counts)
    : m_random(seed), m_sabotage(sabotage), m_counts(counts), m_disk(m_random(), sabotage == Sabotage::SyncsIgnored)
{
    m_states.append(expected());
}

bool PowerCutChecks::liveUntilPowerCut()
{
    m_disk.switchOn(std::uniform_int_distribution(1, longestLife)(m_random));
    work();
    if (m_isBroken)
        return false;
    ++m_counts.cuts;
    return judgeRemains();
}

void PowerCutChecks::work()
{
    PowerCutVfs vfs(m_disk);
    const auto close = qScopeGuard([this] { m_store.reset(); });
    while (isRunning()) {
        open();
        while (isRunning() && upTo(19) > 0)
            act();
        m_store.reset(); // checkpoints
    }
}

void PowerCutChecks::open()
{
    attempt([this] {
        m_store.emplace(m_folder.path());
        m_check = m_store->restore();
        if (m_disk.isOn() && !m_disk.hasSeen(m_store->fileName().toStdString()))
            throw std::runtime_error("Qt's SQLite driver does not use the SQLite library of this program");
        if (m_sabotage == Sabotage::SynchronousNormal)
            powercut::commitWithoutSync();
    });
}

void PowerCutChecks::act()
{
    const int action = upTo(19);
    if (!m_check || action > 1)
        change();
    else if (action == 1)
        finish();
    else
        park();
}

void PowerCutChecks::change()
{
    if (!m_check)
        m_check = QSharedPointer<SaleDocument>::create();
    const auto goods = m_check->getGoodsItems();
    for (int changes = upTo(2); changes >= 0; --changes) {
        const int posnum = goods.isEmpty() ? 0 : goods.at(upTo(static_cast<int>(goods.size()) - 1))->getPosnum();
        switch (upTo(5)) {
        case 0:
            m_check->addCard(builder::card(QString(upTo(3000), u'7')));
            break;
        case 1:
            m_check->setPluginData(u"kvo"_s, QString::number(upTo(3)), QString(upTo(upTo(9) ? 300 : 20'000), u'x'));
            break;
        case 2:
            if (const auto item = m_check->findGoodsItem(posnum))
                item->getTmc()->setName(QString(upTo(500), u'n'));
            break;
        case 3:
            if (m_check->findGoodsItem(posnum))
                m_check->removeGoodsItem(posnum);
            break;
        case 4:
            if (const auto item = m_check->findGoodsItem(posnum); item && item->getTotal() > Money::fromKopecks(10))
                m_check->addImpact(builder::shares({{posnum, 0.1}}));
            break;
        default:
            m_check->addGoodsItem(builder::line(1000 + upTo(1000)));
        }
    }
    step([this] { m_store->save(*m_check); });
}

void PowerCutChecks::finish()
{
    const auto check = std::exchange(m_check, nullptr);
    m_journal.append(check->getIdentifier().toUtf8());
    step([&] { m_store->finish(*check, {{u"check"_s, check->getIdentifier()}}); });
    m_counts.finished += m_disk.isOn() ? 1 : 0;
}

void PowerCutChecks::park()
{
    const auto check = std::exchange(m_check, nullptr);
    m_parked.append(check->getIdentifier().toUtf8());
    step([this] { m_store->park(u"Отложен"_s); });
}

/// What the operation makes of the state is acknowledged when it returns while the power is on.
void PowerCutChecks::step(const std::function<void()> &operation)
{
    m_inHand = expected();
    attempt([&] {
        operation();
        if (!m_disk.isOn())
            return;
        m_states.append(m_inHand);
        ++m_counts.saved;
    });
}

PowerCutChecks::State PowerCutChecks::expected() const
{
    return stateOf(m_check.data(), m_parked, m_journal);
}

PowerCutChecks::State PowerCutChecks::stateIn(CheckStore &store)
{
    const auto open = store.restore();
    QByteArrayList parked;
    for (const auto checks = store.checks(); const auto &check : checks) {
        if (check.standing != CheckStore::Standing::Current)
            parked.append(check.identifier.toUtf8());
    }
    QByteArrayList journal;
    for (const auto entries = store.journal(); const auto &entry : entries)
        journal.append(entry.entry.value(u"check"_s).toString().toUtf8());
    return stateOf(open.data(), parked, journal);
}

// Nothing may fail but for the power.
void PowerCutChecks::attempt(const std::function<void()> &action)
try {
    action();
} catch (const BasicException &error) {
    if (m_disk.isOn()) {
        m_isBroken = true;
        ++m_counts.unexpected;
        std::cout << "unexpected: " << error.what() << '\n';
    }
}

bool PowerCutChecks::judgeRemains()
{
    PowerCutDisk::Contents contents = m_disk.cut();
    if (upTo(2) == 0) // the index of the log is never synced: anything may be in there
        contents[m_folder.filePath(u"checks.db-shm"_s).toStdString()] = std::string(40'000, '\x5a');
    powercut::put(contents, m_folder.path());
    const QTemporaryDir copy;
    powercut::put(contents, copy.path());
    CheckStore store(copy.path());
    const bool isNew = !contents.contains(m_folder.filePath(u"checks.db"_s).toStdString());
    const State left = stateIn(store);
    if ((!isNew && !powercut::isSound(store.fileName())) || !store.takeNotices().isEmpty()) {
        ++m_counts.corrupt;
        return false;
    }
    if (left == m_inHand && left != m_states.last())
        ++m_counts.inHand;
    else if (left != m_states.last())
        ++(m_states.contains(left) ? m_counts.lost : m_counts.halved);
    m_states.append(left);
    m_inHand = left;
    m_parked.clear();
    m_journal.clear();
    for (const auto checks = store.checks(); const auto &check : checks) {
        if (check.standing != CheckStore::Standing::Current)
            m_parked.append(check.identifier.toUtf8());
    }
    for (const auto entries = store.journal(); const auto &entry : entries)
        m_journal.append(entry.entry.value(u"check"_s).toString().toUtf8());
    return true;
}
