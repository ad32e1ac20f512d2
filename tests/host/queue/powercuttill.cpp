// The till's life: pushes, deliveries and restarts at random until the power fails.
#include "powercuttill.h"

#include "powercutremains.h"
#include "powercutvfs.h"

#include <core/basicexception.h>

#include <QtCore/QFile>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <algorithm>
#include <iostream>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int orders = 6;
constexpr int longestLife = 250; // file operations: some twenty pushes and deliveries
constexpr auto longerThanAnyBackOff = std::chrono::minutes(2);

// For the connection that was opened first.
void commitWithoutSync()
{
    QSqlQuery query(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst(), false));
    if (!query.exec(u"PRAGMA synchronous = NORMAL"_s))
        throw std::runtime_error("PRAGMA synchronous = NORMAL");
}

} // namespace

/// Both sides of the queue, as a till has them.
struct PowerCutTill::Queue
{
    explicit Queue(PowerCutTill &till)
        : delivery(QueueSettings{.database = till.m_database},
                   {{u"kvo"_s, [&till](const QJsonObject &event) { till.receive(event); }}},
                   {[&till] { return till.m_now; },
                    [&till] { return std::generate_canonical<double, 32>(till.m_random); },
                    {}})
    {}

    DBQueueBroker broker;
    QueueDelivery delivery;
};

PowerCutTill::PowerCutTill(std::uint64_t seed, Sabotage sabotage, Report &report)
    : m_random(seed),
      m_sabotage(sabotage),
      m_report(report),
      m_disk(m_random(), sabotage == Sabotage::SyncsIgnored),
      m_ledger(report),
      m_isTidy(chance(0.7))
{}

PowerCutTill::~PowerCutTill()
{
    m_report.dropped += m_disk.dropped();
    m_report.torn += m_disk.torn();
}

bool PowerCutTill::liveUntilPowerCut()
{
    m_disk.switchOn(std::uniform_int_distribution(1, longestLife)(m_random));
    work();
    if (m_isBroken)
        return false;
    ++m_report.cuts;
    ++m_report.cutsByPhase[m_phase];
    return judgeRemains();
}

void PowerCutTill::work()
{
    PowerCutVfs vfs(m_disk);
    // The drain's checkpoints run beside the check thread's pushes.
    vfs.onDatabaseWrite = [this] {
        if (m_phase == Checkpointing && chance(0.2))
            push();
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
    attempt(Opening, [this] {
        m_queue = std::make_unique<Queue>(*this);
        if (m_sabotage == Sabotage::None && chance(0.5))
            m_queue->delivery.hasDeliverable();
        m_queue->broker.status();
        if (!m_disk.hasSeen(m_database.toStdString()))
            throw std::runtime_error("Qt's SQLite driver does not use the SQLite library of this program");
        if (m_sabotage == Sabotage::SynchronousNormal)
            commitWithoutSync();
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
    attempt(Pushing, [this] {
        const QJsonObject event = m_ledger.newEvent(static_cast<int>(m_random() % orders));
        m_queue->broker.push(u"kvo"_s, event, {});
        if (!m_disk.isOn())
            return;
        m_ledger.pushed(event);
        m_ledger.synced(); // with the log that both sides share
    });
}

void PowerCutTill::deliver()
{
    m_delivered.clear();
    attempt(Replaying, [this] {
        m_queue->delivery.step();
        if (m_disk.isOn())
            std::ranges::for_each(m_delivered, [this](const QJsonObject &event) { m_ledger.deleted(event); });
    });
}

void PowerCutTill::receive(const QJsonObject &event)
{
    if (!m_disk.isOn())
        throw std::runtime_error("a till without power sends nothing");
    enter(Replaying);
    m_ledger.arrived(event);
    if (chance(0.1))
        push(); // the next sale, while the exchange lasts
    if (!m_disk.tick() || chance(0.1))
        throw std::runtime_error("no answer");
    m_ledger.delivered(event);
    m_delivered.append(event);
    enter(Deleting);
}

void PowerCutTill::rest()
{
    attempt(Checkpointing, [this] {
        m_queue->delivery.rest();
        if (m_disk.isOn())
            m_ledger.synced();
    });
}

void PowerCutTill::close()
{
    attempt(Closing, [this] {
        m_queue.reset();
        if (m_disk.isOn())
            m_ledger.synced();
    });
}

// Nothing may fail but for the power. Does not throw: actions are also begun inside SQLite and inside the drain.
template <class Action>
void PowerCutTill::attempt(Phase phase, Action action)
{
    const Phase before = m_phase;
    enter(phase);
    try {
        action();
    } catch (const BasicException &error) {
        if (m_disk.isOn()) {
            m_isBroken = true;
            ++m_report.unexpected;
            std::cout << "unexpected: " << error.what() << '\n';
        }
    }
    enter(before);
}

void PowerCutTill::enter(Phase phase)
{
    if (m_disk.isOn())
        m_phase = phase;
}

bool PowerCutTill::judgeRemains()
{
    PowerCutDisk::Contents contents = m_disk.cut();
    if (chance(0.3)) // the index of the log is never synced: anything may be in there
        contents[m_database.toStdString() + "-shm"] = std::string(40'000, '\x5a');
    powercutremains::put(contents, m_folder.path());
    const auto left = powercutremains::events(contents);
    if (left)
        m_ledger.afterCut(*left);
    else
        ++m_report.corrupt;
    return left.has_value();
}
