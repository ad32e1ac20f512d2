// The till's life: pushes, deliveries and restarts at random until the power fails.
#include "powercuttill.h"

#include "powercutfiles.h"
#include "powercutvfs.h"

#include <core/basicexception.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int orders = 6;
constexpr int longestLife = 250; // file operations: some twenty pushes and deliveries
constexpr auto longerThanAnyBackOff = std::chrono::minutes(2);

/// What a machine finds that starts after a power cut, played on a copy of its disk: the events in the sequence of
/// their sending; none when the database is corrupt.
std::optional<QList<QJsonObject>> eventsIn(const PowerCutDisk::Contents &contents)
{
    const QTemporaryDir folder;
    powercut::put(contents, folder.path());
    const QString database = folder.filePath(u"queue.db"_s);
    if (!powercut::isSound(database))
        return {};
    QList<QJsonObject> events;
    try {
        QueueDelivery delivery({.database = database},
                               {{u"kvo"_s, [&events](const QJsonObject &event) { events.append(event); }}});
        while (delivery.step())
            ;
    } catch (const BasicException &error) {
        std::cout << error.what() << '\n';
        return {};
    }
    return events;
}

} // namespace

PowerCutTill::PowerCutTill(std::uint64_t seed, Sabotage sabotage, PowerCutCounts &counts)
    : m_random(seed),
      m_sabotage(sabotage),
      m_counts(counts),
      m_disk(m_random(), sabotage == Sabotage::SyncsIgnored),
      m_ledger(counts),
      m_isTidy(chance(0.7))
{}

bool PowerCutTill::liveUntilPowerCut()
{
    m_disk.switchOn(std::uniform_int_distribution(1, longestLife)(m_random));
    work();
    if (m_isBroken)
        return false;
    ++m_counts.cuts;
    return judgeRemains();
}

void PowerCutTill::work()
{
    PowerCutVfs vfs(m_disk);
    // The drain's checkpoints run beside the check thread's pushes.
    vfs.onDatabaseWrite = [this] {
        const bool isResting = std::exchange(m_isResting, false); // the push may write to the database itself
        if (isResting && chance(0.2))
            push();
        m_isResting = isResting;
    };
    while (isRunning()) {
        open();
        while (isRunning() && !(m_isTidy && chance(0.03)))
            act();
        close();
    }
}

void PowerCutTill::open()
{
    attempt([this] {
        m_broker.emplace();
        m_delivery.emplace(
            QueueSettings{.database = m_database},
            QHash<QString, QueueHandler>{{u"kvo"_s, [this](const QJsonObject &event) { receive(event); }}},
            QueueDelivery::Environment{
                [this] { return m_now; }, [this] { return std::generate_canonical<double, 32>(m_random); }, {}});
        if (m_sabotage == Sabotage::None && chance(0.5))
            m_delivery->hasDeliverable();
        m_broker->status();
        if (!m_disk.hasSeen(m_database.toStdString()))
            throw std::runtime_error("Qt's SQLite driver does not use the SQLite library of this program");
        if (m_sabotage == Sabotage::SynchronousNormal)
            powercut::commitWithoutSync();
    });
}

void PowerCutTill::act()
{
    m_now += longerThanAnyBackOff;
    const double action = std::uniform_real_distribution()(m_random);
    if (action < 0.45)
        push();
    else if (action < 0.9 || !m_isTidy)
        deliver();
    else
        rest();
}

void PowerCutTill::push()
{
    attempt([this] {
        const QJsonObject event = m_ledger.newEvent(static_cast<int>(m_random() % orders));
        m_broker->push(u"kvo"_s, event, {});
        if (!m_disk.isOn())
            return;
        m_ledger.pushed(event);
        m_ledger.synced(); // with the log that both sides share
    });
}

void PowerCutTill::deliver()
{
    m_delivered.clear();
    attempt([this] {
        m_delivery->step();
        if (m_disk.isOn())
            std::ranges::for_each(m_delivered, [this](const QJsonObject &event) { m_ledger.deleted(event); });
    });
}

void PowerCutTill::receive(const QJsonObject &event)
{
    if (!m_disk.isOn())
        throw std::runtime_error("a till without power sends nothing");
    m_ledger.arrived(event);
    if (chance(0.1))
        push(); // the next sale, while the exchange lasts
    if (!m_disk.tick() || chance(0.1))
        throw std::runtime_error("no answer");
    m_ledger.delivered(event);
    m_delivered.append(event);
}

void PowerCutTill::rest()
{
    attempt([this] {
        m_isResting = true;
        m_delivery->rest();
        if (m_disk.isOn())
            m_ledger.synced();
    });
    m_isResting = false;
}

void PowerCutTill::close()
{
    attempt([this] {
        m_delivery.reset();
        m_broker.reset();
        if (m_disk.isOn())
            m_ledger.synced();
    });
}

// Nothing may fail but for the power. Does not throw: actions are also begun inside SQLite and inside the drain.
void PowerCutTill::attempt(const std::function<void()> &action)
try {
    action();
} catch (const BasicException &error) {
    if (m_disk.isOn()) {
        m_isBroken = true;
        ++m_counts.unexpected;
        std::cout << "unexpected: " << error.what() << '\n';
    }
}

bool PowerCutTill::judgeRemains()
{
    PowerCutDisk::Contents contents = m_disk.cut();
    if (chance(0.3)) // the index of the log is never synced: anything may be in there
        contents[m_database.toStdString() + "-shm"] = std::string(40'000, '\x5a');
    powercut::put(contents, m_folder.path());
    const auto left = eventsIn(contents);
    if (left)
        m_ledger.afterCut(*left);
    else
        ++m_counts.corrupt;
    return left.has_value();
}
